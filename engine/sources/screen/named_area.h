// The part of an X11 screen that a text names, and how large it is now.
#pragma once

#include <string>

#include "engine/plan/screen_area.h"

namespace engine {

/// The area that a text names, as the variable TESSIVO_SCREEN holds it:
///   ""                 the whole screen
///   region:WxH+X+Y     pixels; X and Y are the distance from the left and upper edge
///   monitor:N          counted from 0 in the order in which -devices lists the monitors
///   window:TITLE       the foremost open window with that title, else the foremost one whose title
///                      contains it
/// Throws platform::Error that says what is allowed.
ScreenArea ParseScreenArea(const std::string& text);

/// Whether the mouse pointer is recorded, as the variable TESSIVO_POINTER holds it: "on", "off", or
/// "" for on. Throws platform::Error for another text.
bool ParsePointer(const std::string& text);

/// The area that a screen of the device list stands for ("x11", "x11:monitor:NAME").
/// Throws platform::Error for what is none.
ScreenArea AreaOfDevice(const std::string& device_id);

/// "the screen", "monitor 1", "the window \"Editor\"": as it stands in messages.
std::string Describe(const ScreenArea& area);

/// How large the area is now. Throws platform::Error when there is no X server, or no such area: a
/// region that is not wholly inside the screen, a monitor or window that is not there. Blocks as
/// long as an X server that hangs.
ScreenSize SizeNow(const ScreenArea& area);

}  // namespace engine
