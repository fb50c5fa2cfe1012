// The audio formats of each codec and mode: which there are, which one is meant by what was asked
// for, and how commands spell them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "platform/codec_table.h"

namespace engine {

using platform::AudioCodecRow;

/// One audio format of a codec. `value` is the exact bit rate in bits per second, in quality mode
/// the quality 0..100.
struct AudioFormat {
    std::int32_t value;
    std::int32_t sampling_rate;  // Hz
    std::int32_t channels;
    std::int32_t bits_per_sample;
    constexpr bool operator==(const AudioFormat&) const = default;
};

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

/// "quality 75", "64 kbps".
std::string RateText(platform::VbrMode mode, std::int32_t value);
/// Whole kilohertz, as arguments carry them.
std::int32_t ArgumentKilohertz(std::int32_t sampling_rate);
/// "mono", "stereo", "6 channels".
std::string ChannelText(std::int32_t channels);

}  // namespace engine
