// The engine's codec table: every codec of the language with the names that a player shows, its
// rate-control modes, its audio formats, and what encodes it here.
#pragma once

#include <cstdint>
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
};

/// A codec's place in the table is its index in every rate-control mode.
struct AudioCodecRow {
    std::uint16_t tag;          // as the language knows it; 0 = uncompressed
    const char* name;           // as a player shows it
    const char* av_encoder;     // the libavcodec encoder that makes it
    std::uint16_t written_tag;  // format tag of the stream that is written
};

struct VideoCodecRow {
    std::uint32_t four_cc;          // as the language knows it; 0 = uncompressed
    const char* name;               // as a player shows it
    const char* av_encoder;         // the libavcodec encoder that makes it
    std::uint32_t written_four_cc;  // FourCC of the stream that is written
};

std::span<const AudioCodecRow> AudioCodecs();
std::span<const VideoCodecRow> VideoCodecs();

/// How many codecs a mode enumerates: the table's first ones.
int AudioCodecCount(platform::VbrMode mode);
int VideoCodecCount(platform::VbrMode mode);

/// The name in a listing and a report: the codec's own, with what stands in for it where it has no
/// encoder of its own ("Windows Media Video 9 (as Windows Media Video 8)").
std::string AudioDisplayName(const AudioCodecRow& row, platform::VbrMode mode);
std::string VideoDisplayName(const VideoCodecRow& row);

/// The formats of a codec in a mode; empty when it does not have the mode.
std::span<const AudioFormat> AudioFormats(const AudioCodecRow& row, platform::VbrMode mode);

}  // namespace engine
