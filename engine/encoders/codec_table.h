// The engine's codec table: every codec of the language with the names that a player shows, its
// rate-control modes, its audio formats, and what encodes it here.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "platform/encoder.h"

namespace engine {

/// One audio format of a codec. `value` is the exact bit rate in bits per second, in quality mode
/// the quality 0..100.
struct AudioFormat {
    std::int32_t value;
    std::int32_t sampling_rate;  // Hz
    std::int32_t channels;
    std::int32_t bits_per_sample;
    constexpr bool operator==(const AudioFormat&) const = default;
};

/// A codec's place in the table is its index in every rate-control mode.
struct AudioCodecRow {
    std::uint16_t tag;          // as the language knows it; 0 = uncompressed
    const char* name;           // as a player shows it
    const char* av_encoder;     // the libavcodec encoder that makes it
    std::uint16_t written_tag;  // format tag of the stream that is written
    const char* stand_in;       // name of the codec that is written in its place; null = itself
};

struct VideoCodecRow {
    std::uint32_t four_cc;          // as the language knows it; 0 = uncompressed
    const char* name;               // as a player shows it
    const char* av_encoder;         // the libavcodec encoder that makes it; null = our own
    std::uint32_t written_four_cc;  // FourCC of the stream that is written
    const char* stand_in;           // name of the codec that is written in its place; null = itself
    bool even_width;                // its encoder takes no odd width ...
    bool even_height;               // ... or height
    bool fields;                    // its encoder codes interlaced pictures
};

std::span<const AudioCodecRow> AudioCodecs();
std::span<const VideoCodecRow> VideoCodecs();

/// "constant rate", "peak rate", "quality", "bit rate VBR".
const char* ModeName(platform::VbrMode mode);

/// How many codecs a mode enumerates: the table's first ones.
int AudioCodecCount(platform::VbrMode mode);
int VideoCodecCount(platform::VbrMode mode);

/// The name in a listing and a report: the codec's own, with what stands in for it where it has no
/// encoder of its own ("Windows Media Video 9 Screen (as Windows Media Video 8)"), or with the mode
/// that it needs where the mode lists it without formats.
std::string AudioDisplayName(const AudioCodecRow& row, platform::VbrMode mode);
std::string VideoDisplayName(const VideoCodecRow& row);

/// The formats of a codec in a mode, no two of which read the same as an argument of -a_setting;
/// empty when it does not have the mode.
std::span<const AudioFormat> AudioFormats(const AudioCodecRow& row, platform::VbrMode mode);

/// Formats that are taken when asked for exactly, but not listed: they differ from a listed one by
/// less than a kilobit (profiles carry 64040 and 64016 for one argument), or their rate is none
/// that an argument may have.
std::span<const AudioFormat> UnlistedAudioFormats(const AudioCodecRow& row, platform::VbrMode mode);

/// The format that is meant by `wanted`: the one with exactly this rate, else the first listed one
/// whose rate rounds (halves to even) to the same kilobits; in quality mode the value must match.
std::optional<AudioFormat> FindAudioFormat(const AudioCodecRow& row, platform::VbrMode mode,
                                           const AudioFormat& wanted);

/// The same, but throws Error (invalid argument) with what the codec offers when there is none.
AudioFormat RequireAudioFormat(const AudioCodecRow& row, platform::VbrMode mode,
                               const AudioFormat& wanted);

/// A format as -a_setting takes it: "64_44_2", "Q75_44_2", with the bits per sample for the codecs
/// that have several.
std::string FormatArgument(const AudioCodecRow& row, platform::VbrMode mode,
                           const AudioFormat& format);

/// How an asked format is really written: a stand-in, and an encoder whose range ends earlier, take
/// the nearest that they can. `format.value` is a bit rate in bits per second in every mode.
struct WrittenAudio {
    const char* av_encoder = nullptr;
    std::uint16_t tag = 0;
    AudioFormat format{};
};
WrittenAudio WrittenFor(const AudioCodecRow& row, platform::VbrMode mode,
                        const AudioFormat& format);

/// The codec description of the file's codec list: what is written ("64 kbps, 44 kHz, stereo CBR"),
/// and in brackets what was asked for where that differs.
std::string AudioDescription(const AudioCodecRow& row, platform::VbrMode mode,
                             const AudioFormat& format);

}  // namespace engine
