// What the header of an audio stream says that its format and rate do not.
#pragma once

#include <cstdint>
#include <vector>

#include "codecs/wma/rate_control.h"
#include "engine/plan/written_audio.h"

namespace engine {

struct AudioStreamFormat {
    std::int32_t block_align = 0;  // bytes
    std::vector<std::uint8_t> extra_data;
};
/// What our encoders call it.
codecs::wma::RateMode RateModeOf(platform::VbrMode mode);

/// As a file's stream has it that is encoded from a file; a device's may have smaller blocks.
AudioStreamFormat StreamFormatOf(const WrittenAudio& written, platform::VbrMode mode);

}  // namespace engine
