// What of a screen is recorded.
#pragma once

#include <cstdint>
#include <string>

#include "engine/base/pixel_box.h"

namespace engine {

/// The default is the whole screen.
struct ScreenArea {
    enum class Kind : std::uint8_t { Screen, Region, Monitor, Window };
    Kind kind = Kind::Screen;
    PixelBox region = {};      // Region only
    std::int32_t monitor = 0;  // Monitor without a name: counted from 0
    std::string name = {};     // a monitor's, or a window's title
    bool pointer = true;       // whether the mouse pointer is recorded with it
    bool operator==(const ScreenArea&) const = default;
};

struct ScreenSize {
    std::int32_t width = 0;  // pixels; may be odd
    std::int32_t height = 0;
};

}  // namespace engine
