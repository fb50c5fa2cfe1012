// Frames of a drawn desktop: text that scrolls, a window that is dragged, a photo and a film.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "codecs/screen/rectangle_coder.h"

namespace screen_conformance {

struct DesktopSettings {
    int width = 200;
    int height = 150;
    int colours = 40;  // of text and windows
    bool text = true;
    bool window = false;
    bool photo = false;
    bool film = false;
};

/// 0x00RRGGBB, from the top row down; follows from the number of the frame alone.
std::vector<std::uint32_t> DesktopFrame(const DesktopSettings& settings, int number);

/// As encoders want it.
inline codecs::screen::PixelView BottomUp(const std::vector<std::uint32_t>& pixels, int width) {
    return {pixels.data() + (pixels.size() - static_cast<std::size_t>(width)), -width};
}

}  // namespace screen_conformance
