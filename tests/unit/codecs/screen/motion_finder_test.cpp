#include "codecs/screen/motion_finder.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace {

using namespace codecs::screen;

constexpr int kWidth = 640;
constexpr int kHeight = 480;
constexpr int kLine = 13;

// Lines of the same words, but for a number in two columns of cells.
std::vector<std::uint32_t> Page(int first) {
    std::vector<std::uint32_t> pixels(std::size_t{kWidth} * kHeight, 0xFFFFFF);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 40; x < 400; ++x) {
            const int line = first + y / kLine;
            const bool number = x >= 56 && x < 72;
            std::minstd_rand random(
                static_cast<unsigned>(1 + y % kLine + 31 * x + (number ? 7919 * line : 0)));
            random.discard(3);
            if (random() % 3 == 0) pixels[static_cast<std::size_t>(y * kWidth + x)] = 0;
        }
    return pixels;
}

TEST(MotionFinder, TellsLinesApartByTheirNumbers) {
    const std::vector<std::uint32_t> before = Page(100);
    const std::vector<std::uint32_t> now = Page(102);
    const PixelView before_view{before.data(), kWidth};
    const PixelView now_view{now.data(), kWidth};
    const Grid grid(kWidth, kHeight);
    ScreenState state;
    state.tiles.resize(grid.Tiles());
    std::vector<std::uint8_t> changed(grid.Cells());
    std::vector<std::uint8_t> moved(changed.size());
    for (int y = 0; y < grid.cell_rows; ++y)
        CompareCells(now.data() + y * kCell * kWidth, kWidth, before.data() + y * kCell * kWidth,
                     kWidth, kWidth, kCell, changed.data() + grid.CellPlace(0, y));
    MotionFinder finder(grid);
    const auto vector = finder.Find(now_view, before_view, {changed, moved}, state);
    ASSERT_TRUE(vector);
    EXPECT_EQ(*vector, (Vector{0, 2 * kLine}));
}

}  // namespace
