// How an audio format that was asked for is written.
#pragma once

#include <cstdint>
#include <string>

#include "engine/plan/audio_formats.h"

namespace engine {

/// `format.value` is a bit rate in bits per second in every mode, and 100 where nothing is lost.
struct WrittenAudio {
    platform::CodecMaker maker{};
    std::uint16_t tag = 0;
    AudioFormat format{};
};
WrittenAudio WrittenFor(const AudioCodecRow& row, platform::VbrMode mode,
                        const AudioFormat& format);

/// The codec description of the file's codec list: "64 kbps, 44 kHz, stereo CBR".
std::string AudioDescription(const AudioCodecRow& row, platform::VbrMode mode,
                             const AudioFormat& format);

}  // namespace engine
