#include "codecs/wmv9/residual.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <ostream>
#include <string>

namespace codecs::wmv9 {
namespace {

struct Footage {
    const char* name;
    std::function<int(int x, int y)> sample;
};

void PrintTo(const Footage& footage, std::ostream* out) { *out << footage.name; }

std::int64_t ErrorOf(const Picture& picture, const Candidate& candidate) {
    std::int64_t squared = 0;
    for (int n = 0; n < kBlocks; ++n) {
        const BlockPlace& place = kBlockPlaces[Index(n)];
        squared += picture.kernels.squared(SourceBlock(picture.source, 0, 0, n),
                                           picture.source[place.plane].stride,
                                           candidate.samples.Block(n), place.stride, 8, 8);
    }
    return squared * static_cast<std::int64_t>(kErrorOfSquaredSample);
}

class RemainingError : public testing::TestWithParam<Footage> {};

// The residual is some hundred times as large: a hundredth of it would hide what remains.
TEST_P(RemainingError, IsThatOfTheSamples) {
    const SequenceHeader sequence;
    Frame source(1, 1);
    Frame result(1, 1);
    MacroblockGrid grid(1, 1);
    for (int plane = 0; plane < 3; ++plane)
        for (int y = 0; y < source[plane].height; ++y)
            for (int x = 0; x < source[plane].width; ++x)
                *source[plane].At(x, y) = static_cast<std::uint8_t>(GetParam().sample(x, y));
    for (const int number : {2, 6, 14}) {
        PictureHeader header;
        header.kind = PictureKind::kP;
        header.quantiser = number;
        const Picture picture{sequence, header, BestKernels(), source, result, grid};
        for (const unsigned shapes : {ShapeBit(Shape::Whole8x8), kAllShapes}) {
            Candidate candidate{};
            candidate.samples.values.fill(120);
            const Quantiser quantiser = Quantiser::Make(number, header.Step(number));
            ASSERT_TRUE(CodeResidual(picture, Estimates(header), quantiser,
                                     {.shapes = shapes, .rd = true}, 0, 0, candidate));
            const auto real = static_cast<double>(ErrorOf(picture, candidate));
            // Reconstructed samples are rounded to whole ones.
            const double rounded = 0.5 * kErrorOfSquaredSample * kMacroblockSamples;
            EXPECT_NEAR(static_cast<double>(candidate.error), real, 0.1 * real + rounded)
                << "quantiser " << number << ", shapes " << shapes;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Residuals, RemainingError,
    testing::Values(Footage{"flat", [](int, int) { return 200; }},
                    Footage{"ramp", [](int x, int y) { return 60 + 6 * x + 5 * y; }},
                    Footage{"edge", [](int x, int y) { return x + y < 13 ? 240 : 20; }},
                    Footage{"stripes", [](int x, int) { return x % 4 < 2 ? 230 : 30; }},
                    Footage{"texture", [](int x, int y) { return 40 + (37 * x + 101 * y) % 180; }}),
    [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace codecs::wmv9
