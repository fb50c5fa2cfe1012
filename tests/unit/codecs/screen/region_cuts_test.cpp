#include "codecs/screen/region_cuts.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "codecs/screen/pixel_kernels.h"

namespace {

using namespace codecs::screen;

constexpr int kColumns = 161;  // more than two words of bits
constexpr int kRows = 40;

struct Cut {
    RegionTree tree;
    std::vector<Leaf> leaves;
};

Cut CutOf(const std::vector<std::uint8_t>& cells) {
    RegionCuts cuts(kColumns * kCell - 3, kRows * kCell - 5);
    Cut cut;
    cuts.Cut(cells, cut.tree, cut.leaves);
    return cut;
}

std::size_t Place(int x, int y) { return static_cast<std::size_t>(y * kColumns + x); }

// Four cuts part an island from what is kept around it, wherever it stands.
TEST(RegionCuts, StandBesideWhatHasChanged) {
    for (const Rect island : {Rect{60, 20, 8, 5}, Rect{0, 0, 6, 6}, Rect{150, 30, 11, 10},
                              Rect{20, 39, 120, 1}, Rect{64, 0, 10, 40}}) {
        std::vector<std::uint8_t> cells(Place(0, kRows), kCanBeKept);
        for (int y = island.y; y < island.y + island.height; ++y)
            for (int x = island.x; x < island.x + island.width; ++x) cells[Place(x, y)] = 0;
        const Cut cut = CutOf(cells);
        ASSERT_EQ(cut.leaves.size(), 1U) << island.x << "," << island.y;
        EXPECT_LE(cut.tree.size(), 9U);
        EXPECT_EQ(cut.leaves[0].rect.x, island.x * kCell);
        EXPECT_EQ(cut.leaves[0].rect.y, island.y * kCell);
    }
}

// A leaf that says to have moved as a whole has; what is in none may be kept.
TEST(RegionCuts, LeavesCoverWhatIsUnlike) {
    for (unsigned seed = 0; seed < 20; ++seed) {
        std::minstd_rand random(seed + 1);
        std::vector<std::uint8_t> cells(Place(0, kRows));
        for (std::uint8_t& cell : cells)
            cell = static_cast<std::uint8_t>(random() % 9 == 0 ? random() % 4 : 1 + seed % 3);
        const Cut cut = CutOf(cells);
        std::vector<int> covered(cells.size());
        for (const Leaf& leaf : cut.leaves) {
            const RegionKind kind = cut.tree[static_cast<std::size_t>(leaf.node)].kind;
            for (int y = leaf.rect.y / kCell; y * kCell < leaf.rect.y + leaf.rect.height; ++y)
                for (int x = leaf.rect.x / kCell; x * kCell < leaf.rect.x + leaf.rect.width; ++x) {
                    ++covered[Place(x, y)];
                    if (kind != RegionKind::MovedWhole) continue;
                    ASSERT_NE(cells[Place(x, y)] & kCanBeMoved, 0) << seed;
                }
        }
        for (std::size_t i = 0; i < cells.size(); ++i) {
            ASSERT_LE(covered[i], 1) << seed;
            ASSERT_GE(covered[i], (cells[i] & kCanBeKept) == 0 ? 1 : 0) << seed;
        }
    }
}

}  // namespace
