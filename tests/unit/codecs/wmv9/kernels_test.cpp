// Each set of kernels gives what the plain one gives. What the format asks of them is seen where an
// independent decoder shows streams that each of them has coded.
#include "codecs/wmv9/kernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "codecs/wmv9/transform_bases.h"
#include "unit/codecs/wmv9/kernel_exercises.h"

namespace {

using namespace codecs::wmv9;

constexpr Shape kShapes[] = {Shape::Whole8x8, Shape::Wide8x4, Shape::Tall4x8, Shape::Small4x4};
bool IsNarrow(Shape shape) { return shape == Shape::Tall4x8 || shape == Shape::Small4x4; }
bool IsLow(Shape shape) { return shape == Shape::Wide8x4 || shape == Shape::Small4x4; }

class KernelsTest : public testing::TestWithParam<int> {
  protected:
    const Kernels& Set() const { return AllKernels()[static_cast<std::size_t>(GetParam())]; }
    static const Kernels& Plain() { return AllKernels()[0]; }
};
INSTANTIATE_TEST_SUITE_P(Sets, KernelsTest,
                         testing::Range(0, static_cast<int>(AllKernels().size())),
                         [](const auto& set) {
                             return std::string(
                                 AllKernels()[static_cast<std::size_t>(set.param)].name);
                         });

double ExactCoefficient(Shape shape, const Block& residual, int at) {
    const int width = IsNarrow(shape) ? 4 : 8;
    const int height = IsLow(shape) ? 4 : 8;
    const int u = at % width;
    const int v = at / 8 % height;
    int sum = 0;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            sum += (width == 4 ? kBasis4[u][x] : kBasis8[u][x]) *
                   (height == 4 ? kBasis4[v][y] : kBasis8[v][y]) *
                   residual.values[at - u - 8 * v + 8 * y + x];
    return 8192.0 * sum / (width == 4 ? kEnergy4[u] : kEnergy8[u]) /
           (height == 4 ? kEnergy4[v] : kEnergy8[v]);
}

// Nearly exact; and what comes back from the nearest whole coefficients is what went in, but for
// their rounding, which moves a sample by two at most.
TEST_P(KernelsTest, ForwardIsUndoneByInverse) {
    for (const Shape shape : kShapes)
        for (const Content content : kContents) {
            double squares = 0;
            for (unsigned seed = 0; seed < 40; ++seed) {
                Block residual;
                const Plane a(8, 8, {}, content, seed);
                const Plane b(8, 8, {}, seed % 2 == 0 ? Content::Black : content, seed + 100);
                Plain().subtract(residual.values, a.At(), a.Stride(), b.At(), b.Stride());
                Block coefficients;
                Set().forward(shape, coefficients.values, residual.values);
                const auto where = [&](int at) {
                    return "shape " + std::to_string(static_cast<int>(shape)) + " at " +
                           std::to_string(at) + " seed " + std::to_string(seed);
                };
                for (int at = 0; at < 64; ++at) {
                    std::int16_t& coefficient = coefficients.values[at];
                    ASSERT_NEAR(coefficient, ExactCoefficient(shape, residual, at), 1) << where(at);
                    coefficient = static_cast<std::int16_t>((coefficient + 4) >> 3);
                }
                Block back;
                Set().inverse(shape, back.values, coefficients.values);
                for (int at = 0; at < 64; ++at) {
                    const int error = back.values[at] - residual.values[at];
                    ASSERT_LE(std::abs(error), 2) << where(at);
                    squares += error * error;
                }
            }
            EXPECT_LT(squares / (40 * 64), 0.18);
        }
}

// Every set gives what the plain one gives, and no other sample of a picture changes.
TEST_P(KernelsTest, AllSetsAreAlike) {
    for (const Exercise& exercise : Exercises())
        for (const Variant& variant : exercise.variants())
            for (const Content content : kContents)
                for (unsigned seed = 0; seed < 3; ++seed) {
                    const Scene before = exercise.scene(variant, content, seed * 11 + 1);
                    Scene expected = before;
                    exercise.run(Plain(), variant, expected);
                    Scene scene = before;
                    exercise.run(Set(), variant, scene);
                    const std::string call =
                        std::string(exercise.name) + " " + variant.Name() + " content " +
                        std::to_string(static_cast<int>(content)) + " seed " + std::to_string(seed);
                    ASSERT_TRUE(scene.out.IsSameAround(before.out, before.changed)) << call;
                    ASSERT_TRUE(scene.out == expected.out) << call;
                    ASSERT_TRUE(scene.result == expected.result) << call;
                    ASSERT_TRUE(std::ranges::equal(scene.numbers, expected.numbers)) << call;
                }
}

}  // namespace
