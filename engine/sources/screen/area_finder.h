// Where the recorded part of an X11 screen lies.
#pragma once

#include <xcb/xcb.h>

#include "engine/base/pixel_box.h"
#include "engine/plan/screen_area.h"
#include "engine/sources/screen/x11_display.h"

namespace engine {

/// A window is looked for by its title once, and stays the same when its title changes.
class AreaFinder {
  public:
    /// Throws platform::Error when there is no such area.
    AreaFinder(X11Display& display, const ScreenArea& area);

    /// What the frame is of: the window of the area, or the root window.
    xcb_window_t window() const { return window_; }

    /// The area inside window(), as it was found last.
    const PixelBox& Box() const { return box_; }

    /// Looks again: what lies outside the screen now is cut off. Throws platform::Error when
    /// nothing is left of the area.
    void FindAgain();

  private:
    PixelBox MonitorBox() const;
    xcb_window_t FindWindow() const;

    X11Display& display_;
    const ScreenArea area_;
    xcb_window_t window_;
    PixelBox box_;
};

}  // namespace engine
