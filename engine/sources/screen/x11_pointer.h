// The mouse pointer, which is in no frame that an X server gives away.
#pragma once

#include <xcb/xfixes.h>

#include <cstdint>

#include "engine/base/pixel_box.h"
#include "engine/sources/screen/pixel_layout.h"
#include "engine/sources/screen/x11_display.h"

namespace engine {

/// One thread. Where the server lacks XFIXES there is no pointer.
class X11Pointer {
  public:
    /// @param window  positions are relative to it
    /// @param shown   whether it is recorded: without, there is no pointer
    X11Pointer(X11Display& display, xcb_window_t window, bool shown);

    void HandleEvent(const xcb_generic_event_t& event);

    /// Asks the server where the pointer is and, after a change, how it looks. True when something
    /// is other than it was.
    bool Track();

    /// What it covers; empty when it is not on this screen.
    const PixelBox& Box() const { return box_; }

    /// Draws it over a frame that shows `shown` of the window.
    void Draw(std::uint8_t* pixels, int stride, const PixelLayout& layout,
              const PixelBox& shown) const;

  private:
    X11Display& display_;
    xcb_window_t window_;
    bool available_;
    bool look_changed_ = true;
    ReplyPtr<xcb_xfixes_get_cursor_image_reply_t> look_;
    PixelBox box_;
};

}  // namespace engine
