// How an audio format that was asked for is really written.
#pragma once

#include <cstdint>
#include <string>

#include "engine/plan/audio_formats.h"

namespace engine {

/// How an asked format is really written: a stand-in, and an encoder whose range ends earlier, take
/// the nearest that they can. `format.value` is a bit rate in bits per second in every mode, and
/// 100 where nothing is lost.
struct WrittenAudio {
    platform::CodecMaker maker{};
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
