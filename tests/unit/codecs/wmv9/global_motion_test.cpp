#include "codecs/wmv9/global_motion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "codecs/wmv9/encoder.h"
#include "codecs/wmv9/lookahead.h"

namespace codecs::wmv9 {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// ---- The search alone

constexpr int kColumns = 16;
constexpr std::uint32_t kOwn = 1000;

/// Blocks that look like nothing but the place that they come from.
std::vector<Displacement> FindAmong(const std::vector<Displacement>& moves_of_columns) {
    TaskTeam team(2);
    GlobalMotion motion;
    const std::vector<std::uint32_t> own(kColumns * 12, kOwn);
    const auto found = motion.Find(
        kColumns, own,
        [&](int column, int, Displacement move) {
            const auto part = static_cast<std::size_t>(column) * moves_of_columns.size() / kColumns;
            return move == moves_of_columns[part] ? 0 : kOwn;
        },
        team);
    return {found.begin(), found.end()};
}

TEST(GlobalMotion, IsFoundWhereNothingLeadsToIt) {
    for (const Displacement move : {Displacement{0, -36}, {46, 0}, {-24, 12}, {2, 0}})
        EXPECT_THAT(FindAmong({move}), ElementsAre(move));
}

TEST(GlobalMotion, ComesInTheOrderOfWhatItSaves) {
    const Displacement page{0, -18};
    const Displacement other{40, 0};
    EXPECT_THAT(FindAmong({other, page, page}), ElementsAre(page, other));
}

TEST(GlobalMotion, IsNoneWhereNothingMovesOrAllIsNew) {
    EXPECT_THAT(FindAmong({{0, 0}}), IsEmpty());
    constexpr int kNowhere = 1000;
    EXPECT_THAT(FindAmong({{kNowhere, 0}}), IsEmpty());
}

// ---- Pictures of sharp detail that jumps

constexpr int kWidth = 160;
constexpr int kHeight = 128;
constexpr int kJump = 10;

struct Page {
    std::vector<std::uint8_t> luma;
    std::vector<std::uint8_t> chroma = std::vector<std::uint8_t>(kWidth * kHeight / 4, 128);
    PictureView View() const {
        return {{luma.data(), chroma.data(), chroma.data()}, {kWidth, kWidth / 2, kWidth / 2}};
    }
};

std::vector<Page> JumpingPages(int count) {
    std::vector<Page> pages;
    for (int page = 0; page < count; ++page) {
        Page& made = pages.emplace_back();
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x) {
                auto value = static_cast<std::uint32_t>((y + kJump * page) / 2 * 977 + x / 2);
                value = (value ^ value >> 7) * 0x45d9f3bU;
                value = (value ^ value >> 16) * 0x45d9f3bU;
                made.luma.push_back((value >> 20 & 3) == 0 ? 30 : 220);
            }
    }
    return pages;
}

TEST(LookaheadMoves, AddUpFromPictureToPicture) {
    TaskTeam team(1);
    Lookahead lookahead(kWidth, kHeight, 4, team);
    for (const Page& page : JumpingPages(3)) lookahead.Add(page.View());
    EXPECT_EQ(lookahead.Trace(2, 0, 5, 2), (Displacement{0, 2 * kJump}));
}

TEST(EncodedPictures, TakeFewBitsWhereAllThatTheyShowJumps) {
    const std::vector<Page> pages = JumpingPages(4);
    EncoderSettings settings;
    settings.width = kWidth;
    settings.height = kHeight;
    settings.preset = 60;
    settings.b_pictures = 2;
    Encoder encoder(settings);
    for (const Page& page : pages) encoder.LookAhead(page.View());
    const auto size = [&](int page, PictureKind kind) {
        PictureRequest request{.kind = kind, .quantiser = 6, .number = page};
        request.b_number = page;
        request.b_pictures = 2;
        return encoder.Encode(pages[static_cast<std::size_t>(page)].View(), request).data.size();
    };
    const std::size_t whole = size(0, PictureKind::kI);
    // A quarter of what the last page shows is new.
    EXPECT_LT(size(3, PictureKind::kP), whole / 3);
    EXPECT_LT(size(1, PictureKind::kB), whole / 6);
    EXPECT_LT(size(2, PictureKind::kB), whole / 6);
}

TEST(EncodedPictures, TakeFewBitsWhereTheyJumpAndNothingAheadIsKnown) {
    const std::vector<Page> pages = JumpingPages(3);
    Encoder encoder({.width = kWidth, .height = kHeight, .preset = 60});
    const auto size = [&](std::size_t page, PictureKind kind) {
        return encoder.Encode(pages[page].View(), {.kind = kind, .quantiser = 6}).data.size();
    };
    const std::size_t whole = size(0, PictureKind::kI);
    size(2, PictureKind::kP);
    encoder.Forget();
    EXPECT_LT(size(1, PictureKind::kP), whole / 3);
    EXPECT_LT(size(2, PictureKind::kP), whole / 3);
}

}  // namespace
}  // namespace codecs::wmv9
