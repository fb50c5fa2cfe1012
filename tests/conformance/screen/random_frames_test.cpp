// Streams of random frames.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>

#include "codecs/screen/fifteen_bit_encoder.h"
#include "codecs/screen/packet.h"
#include "conformance/screen/random_frames.h"
#include "conformance/screen/screen_check.h"

namespace screen_conformance {
namespace {

using codecs::Index;
using codecs::screen::Rect;
using codecs::screen::SliceCut;
using codecs::screen::StreamFormat;
using wmv9_conformance::Random;
using wmv9_conformance::Seeds;

struct Size {
    int width;
    int height;
};
constexpr Size kSizes[] = {{1, 1},   {2, 1},    {1, 5},     {7, 3},    {16, 16}, {33, 17},
                           {64, 48}, {97, 131}, {200, 150}, {4096, 3}, {2, 4096}};

std::string FaultOf(const RandomStreamSettings& settings, int frames) {
    RandomFrames stream(settings);
    ScreenCheck check(stream.Format());
    for (int i = 0; i < frames; ++i) {
        const auto packet = stream.Next();
        const std::string fault = check.Take(packet, stream.Shown());
        if (!fault.empty())
            return fmt::format("seed {}, {}x{}, frame {} ({}): {}", settings.seed, settings.width,
                               settings.height, i, stream.Name(), fault);
    }
    return {};
}

struct Kind {
    const char* why;
    bool rectangles;
    SliceCut slices;
};
// clang-format off
constexpr Kind kKinds[] = {
    // why                       rectangles slices
    {"indices",                  false,     SliceCut::None},
    {"rectangles",               true,      SliceCut::None},
    {"two slices",               false,     SliceCut::Fixed},
    {"slices cut by each frame", false,     SliceCut::PerFrame},
};
// clang-format on

class RandomScreens : public testing::TestWithParam<int> {};

TEST_P(RandomScreens, DecodeToWhatTheEncoderSays) {
    const Kind& kind = kKinds[GetParam()];
    SCOPED_TRACE(kind.why);
    const Seeds seeds(66);
    for (std::uint64_t seed = seeds.first; seed < seeds.first + seeds.count; ++seed) {
        Random random(seed);
        const Size& size = kSizes[seed % std::size(kSizes)];
        EXPECT_EQ(FaultOf({.seed = seed,
                           .width = size.width,
                           .height = size.height,
                           .colours = random.Pick({2, 3, 5, 12, 40, 256}),
                           .rectangles = kind.rectangles,
                           .slices = kind.slices},
                          8),
                  "");
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, RandomScreens, testing::Range(0, 4));

// What drifts in the statistics shows at once.
TEST(ScreenStream, RunsOnForLongWithoutKeyFrame) {
    const Seeds seeds(1);
    EXPECT_EQ(FaultOf({.seed = seeds.first, .width = 61, .height = 43, .keys = false}, 3000), "");
    EXPECT_EQ(
        FaultOf({.seed = seeds.first, .width = 37, .height = 29, .rectangles = true, .keys = false},
                600),
        "");
}

TEST(FifteenBitStream, DecodesToItsPixels) {
    const Seeds seeds(60);
    for (std::uint64_t seed = seeds.first; seed < seeds.first + seeds.count; ++seed) {
        Random random(seed);
        StreamFormat format;
        format.width = random.Between(1, 90);
        format.height = random.Between(1, 70);
        format.fifteen_bits = true;
        ScreenCheck check(format);
        std::vector<std::uint16_t> pixels(Index(format.width) * Index(format.height));
        std::vector<std::uint16_t> before;
        std::vector<std::uint8_t> packet;
        for (int frame = 0; frame < 6; ++frame) {
            Rect area{0, 0, format.width, format.height};
            if (!before.empty()) {
                area.x = random.Below(format.width);
                area.y = random.Below(format.height);
                area.width = random.Between(1, format.width - area.x);
                area.height = random.Between(1, format.height - area.y);
            }
            const int noise = random.Pick({0, 4, 60, 100});
            for (int y = area.y; y < area.y + area.height; ++y)
                for (int x = area.x; x < area.x + area.width; ++x)
                    if (random.Roll(noise))
                        pixels[Index(y * format.width + x)] =
                            static_cast<std::uint16_t>(random.Next() & 0x7FFF);
            codecs::screen::WriteFifteenBitPacket(packet, format, area, pixels, before);
            const std::vector<std::uint32_t> shown(pixels.begin(), pixels.end());
            EXPECT_EQ(check.Take(packet, shown), "") << "seed " << seed << ", frame " << frame;
            before = pixels;
        }
    }
}

TEST(FifteenBitEncoder, SendsWhatChangesAndForgetsWhatIsDropped) {
    const Seeds seeds(40);
    for (std::uint64_t seed = seeds.first; seed < seeds.first + seeds.count; ++seed) {
        Random random(seed);
        StreamFormat format;
        format.width = random.Between(1, 60);
        format.height = random.Between(1, 50);
        format.fifteen_bits = true;
        codecs::screen::EncoderSettings settings;
        settings.width = format.width;
        settings.height = format.height;
        codecs::screen::FifteenBitEncoder encoder(settings);
        ScreenCheck check(format);
        std::vector<std::uint16_t> pixels(Index(format.width) * Index(format.height));
        for (int frame = 0; frame < 12; ++frame) {
            for (int changes = random.Pick({0, 0, 1, 3, 200}); changes > 0; --changes)
                pixels[Index(random.Below(static_cast<int>(pixels.size())))] =
                    static_cast<std::uint16_t>(random.Next() & 0x7FFF);
            const auto coded = encoder.Encode(pixels, {.key = random.Roll(10)});
            if (frame > 0 && random.Roll(25)) {
                encoder.Forget();
                continue;
            }
            const std::vector<std::uint32_t> shown(pixels.begin(), pixels.end());
            ASSERT_EQ(check.Take(coded.data, shown), "") << "seed " << seed << ", frame " << frame;
        }
    }
}

}  // namespace
}  // namespace screen_conformance
