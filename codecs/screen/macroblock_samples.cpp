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

// Where a sample of luma stands in its block, by its row and column.
std::int16_t* LumaRow(Blocks& samples, int row, int half) {
    return &samples[2 * (row / 8) + half][Index(row % 8 * 8)];
}

void LoadPart(PixelView source, PlaneView indices, int mask, const Rect& area, Blocks& samples,
              std::uint8_t& blocks) {
    std::array<ChannelSums, kGroups> groups{};
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
            groups[Index(8 * (row / 2) + column / 2)].Add(pixel);
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
        const ChannelSums& group = groups[Index(i)];
        if (group.count == 0) continue;
        samples[4][Index(i)] = group.BlueDifference();
        samples[5][Index(i)] = group.RedDifference();
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
