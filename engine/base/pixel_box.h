// A box of pixels: a part of a screen or of a frame.
#pragma once

#include <algorithm>
#include <cstdint>

namespace engine {

struct PixelBox {
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;

    bool operator==(const PixelBox&) const = default;
    std::int32_t Right() const { return x + width; }
    std::int32_t Bottom() const { return y + height; }
    bool IsEmpty() const { return width <= 0 || height <= 0; }
    std::int64_t Pixels() const { return IsEmpty() ? 0 : std::int64_t{width} * height; }
    bool SameSize(const PixelBox& other) const {
        return width == other.width && height == other.height;
    }
    PixelBox Moved(std::int32_t dx, std::int32_t dy) const {
        return {x + dx, y + dy, width, height};
    }
};

/// What both have; empty when that is nothing.
inline PixelBox Intersection(const PixelBox& a, const PixelBox& b) {
    const std::int32_t x = std::max(a.x, b.x);
    const std::int32_t y = std::max(a.y, b.y);
    return {x, y, std::max(0, std::min(a.Right(), b.Right()) - x),
            std::max(0, std::min(a.Bottom(), b.Bottom()) - y)};
}

/// The smallest box around both, neither of which is empty.
inline PixelBox Around(const PixelBox& a, const PixelBox& b) {
    const std::int32_t x = std::min(a.x, b.x);
    const std::int32_t y = std::min(a.y, b.y);
    return {x, y, std::max(a.Right(), b.Right()) - x, std::max(a.Bottom(), b.Bottom()) - y};
}

}  // namespace engine
