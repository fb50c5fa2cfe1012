// What has been drawn in a window of an X server.
#pragma once

#include <xcb/damage.h>
#include <xcb/xfixes.h>

#include <vector>

#include "engine/base/pixel_box.h"
#include "engine/sources/screen/x11_display.h"

namespace engine {

/// One thread.
class X11Changes {
  public:
    /// @param window  it and all windows in it are watched
    X11Changes(X11Display& display, xcb_window_t window);

    /// Whether the server tells; otherwise everything may have changed at any time.
    bool AreTold() const { return damage_ != 0; }

    /// Whether the event says that something was drawn since Take.
    bool IsToldBy(const xcb_generic_event_t& event) const;

    /// The parts of the window that were drawn in since the last call; what is drawn from now on
    /// is told by a new event. None when the display was woken.
    /// Throws platform::Error when the server is gone.
    std::vector<PixelBox> Take();

  private:
    X11Display& display_;
    xcb_damage_damage_t damage_ = 0;
    xcb_xfixes_region_t region_ = 0;
};

}  // namespace engine
