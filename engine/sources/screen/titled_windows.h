// The open windows of an X11 screen, as people know them.
#pragma once

#include <xcb/xcb.h>

#include <string>
#include <vector>

#include "engine/sources/screen/x11_display.h"

namespace engine {

struct TitledWindow {
    xcb_window_t window;
    std::string title;  // not empty
};

/// Those that can be seen and have a title, and stand in no other one with one; foremost first.
std::vector<TitledWindow> TitledWindows(X11Display& display);

}  // namespace engine
