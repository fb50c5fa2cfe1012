// How an X11 visual lays out its pixels.
#pragma once

#include <array>
#include <cstdint>

#include "engine/base/av/av_ptr.h"
#include "engine/sources/screen/x11_display.h"

namespace engine {

struct PixelLayout {
    AVPixelFormat format;
    int bytes;  // of a pixel: 2 or 4
    struct Channel {
        int shift;
        int bits;
    };
    std::array<Channel, 3> channels;  // red, green, blue
};

/// The layout of a window's pixels. Throws platform::Error for those that cannot be recorded:
/// colours from a table, and big-endian ones.
const PixelLayout& LayoutOf(const X11Display& display, xcb_window_t window);

}  // namespace engine
