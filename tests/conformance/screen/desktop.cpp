#include "conformance/screen/desktop.h"

#include "codecs/common/index.h"
#include "conformance/wmv9/random.h"

namespace screen_conformance {

using codecs::Index;
using wmv9_conformance::Random;

namespace {

constexpr int kLine = 10;  // rows of a line of text

std::uint32_t ColourOf(const DesktopSettings& settings, int number) {
    Random random(7, number % settings.colours);
    return static_cast<std::uint32_t>(random.Next() & 0xFFFFFF);
}

// A line of text in which each letter has its own colour and shape.
std::uint32_t TextPixel(const DesktopSettings& settings, int line, int x, int row) {
    if (row >= 7 || x % 6 == 5) return ColourOf(settings, 0);
    Random random(11, line, x / 6);
    const auto shape = random.Next();
    const bool ink = (shape >> (row * 5 + x % 6) & 1) != 0;
    return ColourOf(settings, ink ? 1 + random.Below(settings.colours) : 0);
}

std::uint32_t PhotoPixel(int x, int y, int number) {
    Random random(13, x, y, number);
    const int grain = random.Below(24);
    const auto channel = [&](int value) { return static_cast<std::uint32_t>(value & 0xFF); };
    return channel((3 * x + number * 5 + grain) / 2) << 16 | channel((2 * y + x + grain) / 2) << 8 |
           channel((x * y / 16 + number * 3 + grain) / 2);
}

}  // namespace

std::vector<std::uint32_t> DesktopFrame(const DesktopSettings& settings, int number) {
    std::vector<std::uint32_t> pixels(Index(settings.width) * Index(settings.height));
    const int scrolled = settings.text ? 2 * number : 0;
    const int window_x = settings.width / 8 + 3 * number;
    const int window_y = settings.height / 3 + number;
    for (int y = 0; y < settings.height; ++y)
        for (int x = 0; x < settings.width; ++x) {
            const int text_y = y + scrolled;
            std::uint32_t pixel = TextPixel(settings, text_y / kLine, x, text_y % kLine);
            const bool right = x >= settings.width / 2;
            if (settings.photo && right && y < settings.height / 2) pixel = PhotoPixel(x, y, 0);
            if (settings.film && right && y >= settings.height / 2)
                pixel = PhotoPixel(x, y, number + 1);
            const int in_x = x - window_x;
            const int in_y = y - window_y;
            if (settings.window && in_x >= 0 && in_y >= 0 && in_x < settings.width / 3 &&
                in_y < settings.height / 3)
                pixel = TextPixel(settings, 1000 + in_y / kLine, in_x, in_y % kLine);
            pixels[Index(y) * Index(settings.width) + Index(x)] = pixel;
        }
    return pixels;
}

}  // namespace screen_conformance
