// What the voice codec is told of the sound that it gets.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/base/ticks.h"

namespace engine {

enum class ContentMode : std::uint8_t { Automatic = 0, Speech = 1, Mixed = 2 };

/// From `begin` on, up to `end`: session times.
struct ContentPart {
    Ticks begin;
    Ticks end;
    ContentMode mode = ContentMode::Automatic;
    bool operator==(const ContentPart&) const = default;
};

struct VoiceContent {
    ContentMode mode = ContentMode::Automatic;  // outside the parts
    std::vector<ContentPart> parts;             // one after the other
};

}  // namespace engine
