// The audio formats of each codec and mode.
#pragma once

#include <span>

#include "engine/plan/audio_formats.h"

namespace engine {

/// Formats of a codec, known by its tag; both lists are empty where it does not have the mode.
struct AudioFormatLists {
    std::span<const AudioFormat> listed;
    std::span<const AudioFormat> unlisted;
};
AudioFormatLists AudioFormatsOf(std::uint16_t tag, platform::VbrMode mode);

}  // namespace engine
