#include "codecs/wmv9/temporal_filter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "codecs/wmv9/encoder.h"
#include "codecs/wmv9/frame.h"
#include "codecs/wmv9/lookahead.h"
#include "support/row_name.h"

namespace codecs::wmv9 {
namespace {

constexpr int kWidth = 168;  // half a macroblock over
constexpr int kHeight = 96;
constexpr int kPictures = 6;
constexpr int kFiltered = 2;
constexpr double kQuantiser = 8;

struct Sequence {
    const char* why;
    int noise;             // at most
    int move_x;            // samples from picture to picture
    int cut;               // the first picture of another scene
    bool flickers;         // each picture is another
    double least_removed;  // of the squared error
    double most_removed;
};

// clang-format off
const Sequence kSequences[] = {
    // why                             noise move cut        flickers least most
    {"noise that stands still",           8,  0, kPictures,     false, 0.4, 0.8},
    {"noise over what moves",             8,  3, kPictures,     false, 0.2, 0.8},
    {"one picture of a scene after it",   8,  0, kFiltered + 2, false, 0.3, 0.7},
    {"none of a scene after it",          8,  0, kFiltered + 1, false, 0,   0},
    {"scenes of a picture each",          8,  0, kPictures,     true,  -0.02, 0.02},
    {"too much to be noise",            120,  0, kPictures,     false, -0.02, 0.1},
};
// clang-format on

struct Pixels {
    std::vector<std::uint8_t> luma = std::vector<std::uint8_t>(kWidth * kHeight);
    std::vector<std::uint8_t> chroma = std::vector<std::uint8_t>(kWidth * kHeight / 4, 128);
    PictureView View() const {
        return {{luma.data(), chroma.data(), chroma.data()}, {kWidth, kWidth / 2, kWidth / 2}};
    }
};

Pixels Picture(const Sequence& sequence, int number, int noise) {
    Pixels made;
    std::minstd_rand random(static_cast<unsigned>(number + 1));
    const int scene = sequence.flickers ? number : number >= sequence.cut ? 1 : 0;
    const auto between = [&](int most) {
        return most == 0 ? 0 : static_cast<int>(random() >> 8U) % (2 * most + 1) - most;
    };
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            const double moved = x + sequence.move_x * number;
            const double across = scene % 2 == 0 ? moved : y;
            const double down = scene % 2 == 0 ? y : moved;
            const double wave = std::sin(across / (3 + scene)) + std::sin(scene + down / 9);
            const int value = 128 + static_cast<int>(25 * wave) + between(noise);
            made.luma[static_cast<std::size_t>(y * kWidth + x)] =
                static_cast<std::uint8_t>(std::clamp(value, 0, 255));
        }
    return made;
}

/// Of the macroblocks that are whole, or of what stands right of them.
double SquaredError(const Frame& frame, const Pixels& clean, int first, int end) {
    double sum = 0;
    for (int y = 0; y < kHeight; ++y)
        for (int x = first; x < end; ++x) {
            const double error =
                *frame[0].At(x, y) - clean.luma[static_cast<std::size_t>(y * kWidth + x)];
            sum += error * error;
        }
    return sum;
}

struct Filtered {
    Frame source{(kWidth + 15) / 16, kHeight / 16};
    Frame result{(kWidth + 15) / 16, kHeight / 16};
};

Filtered Filter(const Sequence& sequence, int threads, double strength) {
    TaskTeam team(threads);
    Lookahead lookahead(kWidth, kHeight, 4, team);
    std::vector<Pixels> pictures;
    std::vector<PictureView> views;
    for (int i = 0; i < kPictures; ++i) pictures.push_back(Picture(sequence, i, sequence.noise));
    for (const Pixels& picture : pictures) {
        views.push_back(picture.View());
        lookahead.Add(views.back());
    }
    Filtered filtered;
    for (Frame* frame : {&filtered.source, &filtered.result})
        frame->Load(views[kFiltered], kWidth, kHeight, 0, kHeight / 16);
    TemporalFilter filter(kWidth, kHeight, lookahead, team);
    filter.Apply(filtered.result, kFiltered, views, 0, kQuantiser, strength);
    return filtered;
}

class TemporallyFiltered : public testing::TestWithParam<Sequence> {};
INSTANTIATE_TEST_SUITE_P(Rows, TemporallyFiltered, testing::ValuesIn(kSequences),
                         test_support::NameOfRow());

TEST_P(TemporallyFiltered, PicturesLoseNoiseAlone) {
    constexpr int kWhole = kWidth / 16 * 16;
    const Pixels clean = Picture(GetParam(), kFiltered, 0);
    const Filtered filtered = Filter(GetParam(), 1, 0.6);
    const double removed = 1 - SquaredError(filtered.result, clean, 0, kWhole) /
                                   SquaredError(filtered.source, clean, 0, kWhole);
    EXPECT_GE(removed, GetParam().least_removed);
    EXPECT_LE(removed, GetParam().most_removed);
    EXPECT_EQ(SquaredError(filtered.result, clean, kWhole, kWidth),
              SquaredError(filtered.source, clean, kWhole, kWidth));
}

TEST(TemporalFilter, DoesTheSameWithMoreThreads) {
    const Sequence& sequence = kSequences[1];
    const Filtered alone = Filter(sequence, 1, 0.3);
    const Filtered together = Filter(sequence, 3, 0.3);
    for (int y = 0; y < kHeight; ++y)
        EXPECT_TRUE(std::equal(alone.result[0].At(0, y), alone.result[0].At(kWidth, y),
                               together.result[0].At(0, y)));
}

}  // namespace
}  // namespace codecs::wmv9
