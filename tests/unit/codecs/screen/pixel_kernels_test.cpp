// The vectors of this machine beside the formulas, one pixel after the other.
#include "codecs/screen/pixel_kernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

namespace {

using namespace codecs::screen;

constexpr int kSide = 16;

std::vector<std::uint32_t> Pixels(std::size_t count, unsigned seed) {
    std::minstd_rand random(seed);
    std::vector<std::uint32_t> pixels(count);
    for (std::uint32_t& pixel : pixels)
        pixel = seed % 3 == 0 ? (random() % 2 == 0 ? 0xFF000000U : 0x00FFFFFFU)
                              : static_cast<std::uint32_t>(random() * 2654435761U);
    return pixels;
}

int Channel(std::uint32_t pixel, int shift) { return static_cast<int>(pixel >> shift & 0xFF); }

TEST(PixelKernels, MacroblocksAreThoseOfTheMatrix) {
    for (unsigned seed = 0; seed < 30; ++seed) {
        const std::ptrdiff_t stride = seed % 2 == 0 ? 21 : -21;
        const std::vector<std::uint32_t> pixels = Pixels(21 * kSide, seed);
        const std::uint32_t* const first = pixels.data() + (stride < 0 ? 21 * (kSide - 1) : 0);
        alignas(64) std::array<std::int16_t, 6 * 64> samples{};
        ConvertMacroblock(first, stride, samples.data());
        for (int y = 0; y < kSide; ++y)
            for (int x = 0; x < kSide; ++x) {
                const std::uint32_t pixel = first[y * stride + x];
                const double luma = 0.299 * Channel(pixel, 16) + 0.587 * Channel(pixel, 8) +
                                    0.114 * Channel(pixel, 0);
                const int block = 2 * (y / 8) + x / 8;
                ASSERT_NEAR(samples[static_cast<std::size_t>(64 * block + 8 * (y % 8) + x % 8)],
                            luma, 0.51)
                    << seed << " at " << x << "," << y;
            }
        for (int y = 0; y < kSide; y += 2)
            for (int x = 0; x < kSide; x += 2) {
                double red = 0;
                double green = 0;
                double blue = 0;
                for (const std::ptrdiff_t at :
                     {std::ptrdiff_t{0}, std::ptrdiff_t{1}, stride, stride + 1}) {
                    const std::uint32_t pixel = first[y * stride + x + at];
                    red += Channel(pixel, 16) / 4.0;
                    green += Channel(pixel, 8) / 4.0;
                    blue += Channel(pixel, 0) / 4.0;
                }
                const auto place = static_cast<std::size_t>(4 * 64 + 8 * (y / 2) + x / 2);
                const double luma = 0.299 * red + 0.587 * green + 0.114 * blue;
                ASSERT_NEAR(samples[place], std::min(128 + (blue - luma) / 1.772, 255.0), 0.51);
                ASSERT_NEAR(samples[place + 64], std::min(128 + (red - luma) / 1.402, 255.0), 0.51);
            }
    }
}

TEST(PixelKernels, ChangesAreCountedByTheirLargestChannel) {
    for (unsigned seed = 0; seed < 60; ++seed) {
        const int width = 1 + static_cast<int>(seed % 19);
        const std::vector<std::uint32_t> a = Pixels(40 * 16, seed);
        std::vector<std::uint32_t> b = a;
        std::minstd_rand random(seed + 9);
        for (std::uint32_t& pixel : b) {
            pixel ^= 0xFF000000U;  // is no colour
            if (random() % 3 == 0) pixel ^= 1U << random() % 24;
        }
        const int slight = static_cast<int>(seed % 40);
        int all = 0;
        int few = 0;
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < width; ++x) {
                const auto at = static_cast<std::size_t>(40 * y + x);
                int most = 0;
                for (const int shift : {0, 8, 16})
                    most = std::max(most, std::abs(Channel(a[at], shift) - Channel(b[at], shift)));
                all += most > 0 ? 1 : 0;
                few += most > 0 && most <= slight ? 1 : 0;
            }
        const PixelChanges changes = CountChanges(a.data(), 40, b.data(), 40, width, 16, slight);
        EXPECT_EQ(changes.all, all) << seed;
        EXPECT_EQ(changes.slight, few) << seed;
    }
}

}  // namespace
