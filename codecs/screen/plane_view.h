// Rectangles, vectors and planes of a picture as it is coded: from the bottom row up.
#pragma once

#include <cstddef>
#include <cstdint>

namespace codecs::screen {

struct Rect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    bool operator==(const Rect&) const = default;
    bool Empty() const { return width <= 0 || height <= 0; }
    std::int64_t Area() const { return std::int64_t{width} * height; }
};

/// From a pixel to the one of the frame before that it is taken from.
struct Vector {
    int x = 0;
    int y = 0;
    bool operator==(const Vector&) const = default;
};

/// A byte a pixel, without gaps between the rows.
struct PlaneView {
    const std::uint8_t* pixels = nullptr;
    int width = 0;

    const std::uint8_t* Row(int y) const { return pixels + std::ptrdiff_t{y} * width; }
    std::uint8_t At(int x, int y) const { return Row(y)[x]; }
};

/// 0x??RRGGBB each, from the bottom row up.
struct PixelView {
    const std::uint32_t* pixels = nullptr;
    std::ptrdiff_t stride = 0;  // pixels from a row to the one above; may be negative

    const std::uint32_t* Row(int y) const { return pixels + y * stride; }
};

/// What an inter frame says of each of its pixels.
enum PixelMask : std::uint8_t { kNew = 1, kKept = 2, kMoved = 4 };

}  // namespace codecs::screen
