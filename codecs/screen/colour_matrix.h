// Samples of full range from pixels (ITU-R BT.601), in sixteen bits of fraction.
#pragma once

#include <algorithm>
#include <cstdint>

namespace codecs::screen {

constexpr int kLumaOfRed = 19595;
constexpr int kLumaOfGreen = 38470;
constexpr int kLumaOfBlue = 7471;

constexpr int kBlueOfRed = -11058;
constexpr int kBlueOfGreen = -21710;
constexpr int kBlueOfBlue = 32768;

constexpr int kRedOfRed = 32768;
constexpr int kRedOfGreen = -27439;
constexpr int kRedOfBlue = -5329;

constexpr int kHalf = 1 << 15;
constexpr int kMiddle = 128 << 16;  // a difference of nothing

/// Of a pixel 0x??RRGGBB.
constexpr int Red(std::uint32_t pixel) { return static_cast<int>(pixel >> 16 & 0xFF); }
constexpr int Green(std::uint32_t pixel) { return static_cast<int>(pixel >> 8 & 0xFF); }
constexpr int Blue(std::uint32_t pixel) { return static_cast<int>(pixel & 0xFF); }

constexpr std::int16_t Luma(std::uint32_t pixel) {
    const int scaled =
        kLumaOfRed * Red(pixel) + kLumaOfGreen * Green(pixel) + kLumaOfBlue * Blue(pixel);
    return static_cast<std::int16_t>((scaled + kHalf) >> 16);
}

/// Sums of up to four pixels' channels; the differences are those of their mean.
struct ChannelSums {
    int red = 0;
    int green = 0;
    int blue = 0;
    int count = 0;

    constexpr void Add(std::uint32_t pixel) {
        red += Red(pixel);
        green += Green(pixel);
        blue += Blue(pixel);
        ++count;
    }
    constexpr std::int16_t BlueDifference() const {
        return Difference(kBlueOfRed * red + kBlueOfGreen * green + kBlueOfBlue * blue);
    }
    constexpr std::int16_t RedDifference() const {
        return Difference(kRedOfRed * red + kRedOfGreen * green + kRedOfBlue * blue);
    }

  private:
    constexpr std::int16_t Difference(int scaled) const {
        return static_cast<std::int16_t>(std::min((scaled / count + kHalf + kMiddle) >> 16, 255));
    }
};

}  // namespace codecs::screen
