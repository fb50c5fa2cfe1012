// Which part of an X11 screen is recorded: what names it, and how large it is now.
#pragma once

#include <cstdint>
#include <string>

#include "engine/sources/pixel_box.h"

namespace engine {

/// Made by the functions below; the default is the whole screen.
struct ScreenArea {
    enum class Kind : std::uint8_t { Screen, Region, Monitor, Window };
    Kind kind = Kind::Screen;
    PixelBox region = {};      // Region only
    std::int32_t monitor = 0;  // Monitor without a name: counted from 0
    std::string name = {};     // a monitor's, or a window's title
    bool operator==(const ScreenArea&) const = default;
};

/// The area that a text names, as the variable TESSIVO_SCREEN holds it:
///   ""                 the whole screen
///   region:WxH+X+Y     pixels; X and Y are the distance from the left and upper edge
///   monitor:N          counted from 0 in the order in which -devices lists the monitors
///   window:TITLE       the foremost open window with that title, else the foremost one whose title
///                      contains it
/// Throws platform::Error that says what is allowed.
ScreenArea ParseScreenArea(const std::string& text);

/// The area that a screen of the device list stands for ("x11", "x11:monitor:NAME").
/// Throws platform::Error for what is none.
ScreenArea AreaOfDevice(const std::string& device_id);

/// "the screen", "monitor 1", "the window \"Editor\"": as it stands in messages.
std::string Describe(const ScreenArea& area);

struct ScreenSize {
    std::int32_t width = 0;  // pixels; may be odd
    std::int32_t height = 0;
};

/// How large the area is now. Throws platform::Error when there is no X server, or no such area: a
/// region that is not wholly inside the screen, a monitor or window that is not there. Blocks as
/// long as an X server that hangs.
ScreenSize SizeNow(const ScreenArea& area);

}  // namespace engine
