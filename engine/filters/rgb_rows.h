// Rows of packed RGB into luma and chroma, with the processor's widest vectors.
#pragma once

#include <array>
#include <cstdint>

namespace engine {

inline constexpr int kRgbPixelBytes = 4;

/// A pixel is four bytes, of which the first or the last means nothing.
struct RgbLayout {
    bool blank_first = false;
    bool red_first = false;  // of the three others; else blue
};

/// Weights of a pixel's three bytes in their order, in parts of 2^15.
struct RgbWeights {
    using Three = std::array<std::int16_t, 3>;
    Three luma;
    Three blue;  // difference
    Three red;   // difference
};

/// Limited range. `red` and `blue` are the shares of luma that define a matrix, for example
/// 0.299 and 0.114 (ITU-R BT.601) or 0.2126 and 0.0722 (BT.709).
RgbWeights WeightsOf(double red, double blue, const RgbLayout& layout);

/// Where two rows of a picture go.
struct YuvRows {
    std::uint8_t* above;  // luma
    std::uint8_t* below;
    std::uint8_t* blue;  // chroma of both, half as wide (rounded up)
    std::uint8_t* red;
};

/// Two rows of the picture, which may be the same one twice.
void ConvertRows(const std::uint8_t* above, const std::uint8_t* below, int width,
                 const RgbLayout& layout, const RgbWeights& weights, const YuvRows& rows);

}  // namespace engine
