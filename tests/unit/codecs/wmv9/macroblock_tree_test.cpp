#include "codecs/wmv9/macroblock_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace codecs::wmv9 {
namespace {

constexpr int kMacroblocks = 4;  // in a row
constexpr int kPictures = 5;
constexpr int kSize = 16 * kMacroblocks;

std::uint32_t Hash(std::uint32_t value) {
    value = (value ^ value >> 16) * 0x45d9f3bU;
    value = (value ^ value >> 16) * 0x45d9f3bU;
    return value ^ value >> 16;
}

/// Luma of a picture, its left half at (x + moved) of one scene, its right half of another.
std::vector<std::uint8_t> Luma(int scene, int moved, int right_scene) {
    std::vector<std::uint8_t> luma;
    for (int y = 0; y < kSize; ++y)
        for (int x = 0; x < kSize; ++x) {
            const bool right = x >= kSize / 2;
            const auto place =
                static_cast<std::uint32_t>((right ? x : x + moved) / 8 + 97 * (y / 8));
            const auto seed = static_cast<std::uint32_t>(right ? right_scene : scene);
            luma.push_back(static_cast<std::uint8_t>(Hash(place + 7919 * seed)));
        }
    return luma;
}

class Worth : public testing::Test {
  protected:
    void Show(const std::vector<std::uint8_t>& luma) {
        lookahead_.Add({{luma.data(), luma.data(), luma.data()}, {kSize, kSize, kSize}});
    }
    /// Of the macroblock in row 1.
    float At(int number, int column) {
        return tree_.Worth(lookahead_, number)[static_cast<std::size_t>(kMacroblocks + column)];
    }

    codecs::TaskTeam team_{1};
    Lookahead lookahead_{kSize, kSize, 8, team_};
    MacroblockTree tree_;
};

TEST_F(Worth, GrowsWithThePicturesThatTheMacroblockStaysIn) {
    for (int i = 0; i < kPictures; ++i) Show(Luma(1, 0, i));
    for (int number = 0; number < kPictures; ++number) {
        EXPECT_NEAR(At(number, 0), kPictures - number, 0.3) << number;
        EXPECT_LT(At(number, 3), 2) << number;
    }
}

TEST_F(Worth, FollowsWhatMoves) {
    for (int i = 0; i < 3; ++i) Show(Luma(1, 16 * i, 9));
    // What was in the second column is in the first one afterwards, and then gone.
    EXPECT_GT(At(0, 1), 1.7F);
    EXPECT_LT(At(0, 1), 2.1F);
    EXPECT_LT(At(0, 0), 1.3F);
}

TEST_F(Worth, EndsWhereTheSceneChanges) {
    for (int i = 0; i < kPictures; ++i) Show(Luma(i < 3 ? 1 : 2, 0, i < 3 ? 3 : 4));
    EXPECT_LT(At(2, 0), 2);
    EXPECT_LT(At(0, 0), 4);
    EXPECT_GT(At(0, 0), 2.9F);
}

TEST_F(Worth, OfPicturesThatAreKeptOnly) {
    for (int i = 0; i < kPictures; ++i) Show(Luma(1, 0, 2));
    lookahead_.DropBefore(3);
    EXPECT_FALSE(lookahead_.Has(2));
    EXPECT_TRUE(lookahead_.Has(3));
    EXPECT_FALSE(lookahead_.Has(kPictures));
    EXPECT_FLOAT_EQ(At(3, 0), 2);
}

}  // namespace
}  // namespace codecs::wmv9
