// Draws on a display, and knows what is to be seen there.
#pragma once

#include <xcb/xcb.h>

#include <memory>
#include <string>
#include <vector>

#include "engine/base/pixel_box.h"

namespace test_support {

/// Pixels as their numbers on the screen.
struct Canvas {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;

    Canvas(int the_width, int the_height)
        : width(the_width),
          height(the_height),
          pixels(static_cast<std::size_t>(width * height), 0) {}
    bool operator==(const Canvas&) const = default;

    std::uint32_t& At(int x, int y) { return pixels[static_cast<std::size_t>(y * width + x)]; }
    void Fill(const engine::PixelBox& box, std::uint32_t pixel);
    Canvas Part(const engine::PixelBox& box) const;
};

/// What it does has happened at the server when a call returns. The screen is black and the pointer
/// cannot be seen at first.
class Painter {
  public:
    explicit Painter(const std::string& display);

    xcb_window_t root() const { return screen_->root; }
    int width() const { return screen_->width_in_pixels; }
    int height() const { return screen_->height_in_pixels; }

    void Fill(xcb_window_t window, const engine::PixelBox& box, std::uint32_t pixel);
    /// A window filled with a pixel, in front of all others.
    xcb_window_t Open(const engine::PixelBox& box, const std::string& title, std::uint32_t pixel);
    /// Gives the window a property of one number, or one atom where `type` is XCB_ATOM_ATOM.
    void SetProperty(xcb_window_t window, const std::string& name, xcb_atom_t type,
                     std::uint32_t value);
    xcb_atom_t Atom(const std::string& name);
    void Close(xcb_window_t window);
    void Resize(xcb_window_t window, int width, int height);
    void Show(xcb_window_t window, bool shown);
    void MovePointer(int x, int y);
    /// A white box whose point is at (1, 2) of it.
    void ShowPointer(int width, int height);

  private:
    void SetPointer(int width, int height, bool seen);
    void Sync();

    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };
    std::unique_ptr<xcb_connection_t, Disconnect> connection_;
    const xcb_screen_t* screen_ = nullptr;
    xcb_gcontext_t context_ = 0;
};

}  // namespace test_support
