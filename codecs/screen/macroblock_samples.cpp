#include "codecs/screen/macroblock_samples.h"

#include <algorithm>
#include <array>

#include "codecs/common/index.h"
#include "codecs/screen/colour_matrix.h"
#include "codecs/screen/pixel_kernels.h"

namespace codecs::screen {
namespace {

using wmv9::Blocks;

constexpr int kGroups = 64;  // of four pixels
constexpr std::uint8_t kAllBlocks = 0x3F;

int Red(std::uint32_t pixel) { return static_cast<int>(pixel >> 16 & 0xFF); }
int Green(std::uint32_t pixel) { return static_cast<int>(pixel >> 8 & 0xFF); }
int Blue(std::uint32_t pixel) { return static_cast<int>(pixel & 0xFF); }

std::int16_t Luma(std::uint32_t pixel) {
    const int scaled =
        kLumaOfRed * Red(pixel) + kLumaOfGreen * Green(pixel) + kLumaOfBlue * Blue(pixel);
    return static_cast<std::int16_t>((scaled + kHalf) >> 16);
}

int ScaledBlueDifference(int red, int green, int blue) {
    return kBlueOfRed * red + kBlueOfGreen * green + kBlueOfBlue * blue;
}

int ScaledRedDifference(int red, int green, int blue) {
    return kRedOfRed * red + kRedOfGreen * green + kRedOfBlue * blue;
}

std::int16_t Difference(int scaled) {
    return static_cast<std::int16_t>(std::min((scaled + kHalf + kMiddle) >> 16, 255));
}

// Where a sample of luma stands in its block, by its row and column.
std::int16_t* LumaRow(Blocks& samples, int row, int half) {
    return &samples[2 * (row / 8) + half][Index(row % 8 * 8)];
}

struct Sums {
    int red = 0;
    int green = 0;
    int blue = 0;
    int count = 0;
};

void LoadPart(PixelView source, PlaneView indices, int mask, const Rect& area, Blocks& samples,
              std::uint8_t& blocks) {
    std::array<Sums, kGroups> groups{};
    std::array<int, 4> sums{};
    std::array<int, 4> counts{};
    std::array<bool, Index(kMacroblock) * Index(kMacroblock)> shows{};
    for (int row = 0; row < area.height; ++row) {
        const std::uint32_t* const pixels = source.Row(area.y + row) + area.x;
        const std::uint8_t* const of = mask >= 0 ? indices.Row(area.y + row) + area.x : nullptr;
        for (int column = 0; column < area.width; ++column) {
            if (of != nullptr && of[column] != mask) continue;
            const std::uint32_t pixel = pixels[column];
            const std::int16_t luma = Luma(pixel);
            const std::size_t n = Index(2 * (row / 8) + column / 8);
            LumaRow(samples, row, column / 8)[column % 8] = luma;
            sums[n] += luma;
            ++counts[n];
            shows[Index(kMacroblock * row + column)] = true;
            Sums& group = groups[Index(8 * (row / 2) + column / 2)];
            group.red += Red(pixel);
            group.green += Green(pixel);
            group.blue += Blue(pixel);
            ++group.count;
        }
    }
    for (int n = 0; n < 4; ++n) {
        const int count = counts[Index(n)];
        if (count == 0) continue;
        blocks = static_cast<std::uint8_t>(blocks | 1 << (5 - n) | 3);
        const auto mean = static_cast<std::int16_t>((sums[Index(n)] + count / 2) / count);
        for (int i = 0; i < 64; ++i) {
            const int row = n / 2 * 8 + i / 8;
            const int column = n % 2 * 8 + i % 8;
            if (!shows[Index(kMacroblock * row + column)]) samples[n][Index(i)] = mean;
        }
    }
    int blue = 0;
    int red = 0;
    int count = 0;
    for (int i = 0; i < kGroups; ++i) {
        const Sums& group = groups[Index(i)];
        if (group.count == 0) continue;
        samples[4][Index(i)] =
            Difference(ScaledBlueDifference(group.red, group.green, group.blue) / group.count);
        samples[5][Index(i)] =
            Difference(ScaledRedDifference(group.red, group.green, group.blue) / group.count);
        blue += samples[4][Index(i)];
        red += samples[5][Index(i)];
        ++count;
    }
    for (int i = 0; i < kGroups; ++i) {
        if (groups[Index(i)].count != 0) continue;
        samples[4][Index(i)] = static_cast<std::int16_t>((blue + count / 2) / count);
        samples[5][Index(i)] = static_cast<std::int16_t>((red + count / 2) / count);
    }
}

std::uint8_t Clip(int value) { return static_cast<std::uint8_t>(std::clamp(value, 0, 255)); }

}  // namespace

std::uint8_t LoadMacroblock(PixelView source, PlaneView indices, int mask, const Rect& area,
                            Blocks& samples) {
    int showing = 0;
    for (int row = 0; row < area.height; ++row) {
        if (mask < 0) break;
        const std::uint8_t* const of = indices.Row(area.y + row) + area.x;
        for (int column = 0; column < area.width; ++column) showing += of[column] == mask ? 1 : 0;
    }
    if (mask < 0) showing = static_cast<int>(area.Area());
    std::uint8_t blocks = 0;
    if (showing == kMacroblock * kMacroblock) {
        ConvertMacroblock(source.Row(area.y) + area.x, source.stride, samples[0].data());
        blocks = kAllBlocks;
    } else if (showing > 0) {
        LoadPart(source, indices, mask, area, samples, blocks);
    }
    return blocks;
}

std::uint32_t ShownColour(int luma, int blue_difference, int red_difference) {
    const int u = blue_difference - 128;
    const int v = red_difference - 128;
    const int red = luma + ((91881 * v + 32768) >> 16);
    const int green = luma + ((-22554 * u - 46802 * v + 32768) >> 16);
    const int blue = luma + ((116130 * u + 32768) >> 16);
    return static_cast<std::uint32_t>(Clip(red)) << 16 |
           static_cast<std::uint32_t>(Clip(green)) << 8 | Clip(blue);
}

}  // namespace codecs::screen
