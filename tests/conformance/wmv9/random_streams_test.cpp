// Streams of random decisions, which reach what an encoder that chooses well never does.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>

#include "conformance/wmv9/random.h"
#include "conformance/wmv9/random_stream.h"
#include "conformance/wmv9/stream_check.h"

namespace wmv9_conformance {
namespace {

constexpr int kPictures = 8;

struct Size {
    const char* why;
    int width;
    int height;
};

// clang-format off
constexpr Size kSizes[] = {
    // why                                  width height
    {"one macroblock",                         16,  16},
    {"one column",                             16, 352},
    {"one row",                               352,  16},
    {"planes of bits in tiles of 3 by 2",      48,  48},
    {"cropped; tiles and a column and a row",  98,  50},
    {"planes of bits in tiles of 2 by 3",     176, 144},
    {"cropped; tiles of 2 by 3 and a column",  34,  18},
};
// clang-format on
constexpr int kSizeCount = static_cast<int>(std::size(kSizes));

// All sizes with all contents, over and over.
RandomStreamSettings SettingsOf(std::uint64_t seed) {
    const Size& size = kSizes[seed % kSizeCount];
    return {.seed = seed,
            .width = size.width,
            .height = size.height,
            .content = static_cast<Content>(seed / kSizeCount % kContents)};
}

std::string FaultOfStream(std::uint64_t seed) {
    const RandomStreamSettings settings = SettingsOf(seed);
    RandomStream stream(settings);
    StreamCheck check({settings.width, settings.height, stream.SequenceHeader()});
    for (int i = 0; i < kPictures; ++i) {
        const RandomStream::Coded coded = stream.Next();
        check.Take(coded.data, coded.shown, coded.place, coded.name);
    }
    const std::string fault = check.Finish();
    if (fault.empty()) return fault;
    return fmt::format("seed {}, {}x{}: {}", settings.seed, settings.width, settings.height, fault);
}

class RandomStreams : public testing::TestWithParam<int> {};

TEST_P(RandomStreams, DecodeToWhatTheEncoderSays) {
    const Seeds seeds(6 * kContents * kSizeCount);
    for (std::uint64_t seed = seeds.first; seed < seeds.first + seeds.count; ++seed)
        if (static_cast<int>(seed % kSizeCount) == GetParam()) {
            EXPECT_EQ(FaultOfStream(seed), "");
        }
}

INSTANTIATE_TEST_SUITE_P(Sizes, RandomStreams, testing::Range(0, kSizeCount), [](const auto& row) {
    const Size& size = kSizes[row.param];
    return fmt::format("{}x{}", size.width, size.height);
});

}  // namespace
}  // namespace wmv9_conformance
