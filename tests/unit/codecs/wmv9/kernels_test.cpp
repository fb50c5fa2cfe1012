// Each set of kernels: the format's arithmetic by known answers, and all sets alike.
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

struct Placed {
    int place;
    int value;
};
struct InverseCase {
    Shape shape;
    std::vector<Placed> coefficients;  // of one transform, in its own raster
    std::vector<int> residual;
};

// clang-format off
const InverseCase kInverseCases[] = {
    {Shape::Whole8x8,
     {{3, -36}, {8, 102}, {10, -63}, {13, 315}, {18, 261}, {20, 123}, {25, -18}, {26, 372}, {31, 45}, {35, 345}, {38, 357}, {41, -366}, {42, 258}, {46, 192}, {48, 147}, {49, 15}, {57, 195}, {58, 372}, {59, -150}},
     {335, -150, -16, -153, -204, 70, 122, 234, -119, 46, 16, 288, 57, -185, 50, -229, -61, 111, 125, 194, -47, -124, 75, 33, -175, -317, 16, 21, 146, 359, 13, -106, 134, 128, 75, -74, -66, -33, -139, -147, -127, 120, -21, 25, 102, -66, 70, 32, -61, 63, -102, -246, -172, -178, 1, 332, 25, 13, -39, -25, 155, 104, -206, -97}},
    {Shape::Wide8x4,
     {{0, -704}, {1, -368}, {2, 264}, {8, -352}, {9, 192}, {10, -648}, {12, 120}, {14, -152}, {15, 440}, {20, 304}, {21, 584}, {24, -880}, {27, -288}, {28, 432}, {31, -152}},
     {-319, -727, -286, 16, -55, -657, -236, -409, -184, 214, 129, -412, 267, 254, 217, -121, -447, -194, -528, -470, -469, -278, -450, 229, 279, -116, -201, -73, -487, 235, 380, 411}},
    {Shape::Tall4x8,
     {{1, -1008}, {2, -648}, {3, -768}, {6, -640}, {7, 576}, {8, 1008}, {12, -952}, {17, 272}, {18, -184}, {19, 960}, {20, 680}, {21, 416}, {22, 320}, {25, -384}, {26, 96}, {30, 336}, {31, -96}},
     {-174, 77, 700, -74, -880, 482, 309, 21, -452, 427, 84, 732, -130, 136, 406, -237, -992, -548, -364, -413, -1211, -23, -622, 262, 44, 666, -584, 745, -37, 454, 465, 730}},
    {Shape::Small4x4,
     {{0, 40}, {1, -480}, {3, -64}, {7, 864}, {8, -592}, {10, -208}, {12, 320}, {14, -648}},
     {-269, -401, 528, -269, 255, -476, 8, 458, -153, 603, 344, 388, -532, 94, -610, 212}},
};

// Around a block of 4x4 from one row and column before it to two behind.
constexpr int kPicture[7][7] = {
    {0, 200, 170, 255, 255, 11, 181},
    {166, 0, 208, 190, 0, 42, 163},
    {0, 0, 7, 37, 7, 0, 227},
    {0, 163, 248, 255, 218, 0, 0},
    {0, 255, 0, 134, 0, 255, 0},
    {255, 216, 255, 252, 182, 70, 112},
    {0, 221, 21, 255, 5, 0, 206},
};
struct PredictionCase {
    int x;
    int y;
    int rounding;
    std::vector<int> block;
};
const PredictionCase kBicubicCases[] = {
    {1, 0, 0, {39, 226, 142, 0, 0, 16, 32, 0, 193, 255, 255, 165, 205, 22, 99, 63}},
    {2, 0, 1, {95, 224, 91, 2, 2, 24, 24, 0, 215, 255, 251, 107, 135, 59, 59, 135}},
    {3, 0, 0, {153, 216, 41, 16, 3, 32, 16, 0, 235, 255, 241, 49, 63, 99, 22, 205}},
    {0, 1, 1, {0, 152, 140, 0, 34, 63, 84, 67, 197, 193, 235, 172, 251, 55, 154, 37}},
    {0, 2, 0, {0, 95, 96, 0, 76, 130, 144, 127, 222, 123, 201, 111, 241, 127, 185, 88}},
    {0, 3, 1, {0, 41, 56, 0, 119, 198, 204, 183, 244, 53, 165, 50, 229, 198, 218, 140}},
    {1, 1, 0, {11, 168, 98, 0, 42, 70, 85, 38, 207, 205, 227, 148, 212, 71, 124, 85}},
    {2, 1, 1, {57, 167, 53, 0, 50, 76, 82, 13, 205, 218, 212, 122, 158, 100, 90, 140}},
    {3, 2, 1, {62, 109, 0, 0, 121, 144, 140, 6, 152, 184, 134, 138, 154, 172, 108, 165}},
    {2, 2, 0, {29, 110, 32, 0, 108, 142, 145, 44, 182, 161, 159, 129, 186, 155, 135, 138}},
    {3, 3, 0, {23, 60, 0, 0, 185, 208, 201, 23, 103, 137, 72, 179, 205, 217, 160, 131}},
};
const PredictionCase kBilinearCases[] = {
    {0, 0, 0, {0, 208, 190, 0, 0, 7, 37, 7, 163, 248, 255, 218, 255, 0, 134, 0}},
    {2, 0, 0, {104, 199, 95, 21, 4, 22, 22, 4, 206, 252, 237, 109, 128, 67, 67, 128}},
    {2, 0, 1, {104, 199, 95, 21, 3, 22, 22, 3, 205, 251, 236, 109, 127, 67, 67, 127}},
    {0, 2, 1, {0, 107, 113, 3, 81, 127, 146, 112, 209, 124, 194, 109, 235, 127, 193, 91}},
    {2, 2, 0, {54, 111, 59, 12, 105, 137, 129, 56, 167, 159, 152, 118, 182, 160, 142, 127}},
    {2, 2, 1, {54, 110, 58, 12, 104, 137, 129, 56, 166, 159, 152, 118, 181, 160, 142, 127}},
};
constexpr int kChromaRows[2][9] = {
    {0, 0, 183, 0, 178, 255, 171, 0, 255},
    {252, 255, 10, 255, 0, 0, 54, 0, 255},
};
const PredictionCase kChromaCases[] = {  // the first row
    {0, 0, 1, {0, 0, 183, 0, 178, 255, 171, 0}},
    {1, 0, 1, {0, 46, 137, 44, 197, 234, 128, 64}},
    {0, 3, 0, {189, 191, 53, 191, 45, 64, 83, 0}},
    {1, 1, 0, {63, 83, 121, 81, 148, 179, 106, 64}},
    {3, 2, 1, {127, 104, 120, 99, 118, 116, 28, 191}},
    {3, 3, 0, {191, 88, 157, 81, 59, 78, 21, 191}},
};

struct FilterCase {
    const char* why;
    int quantiser;
    int lines[4][8];
    int edge[4][2];  // the fourth and fifth sample of each line, afterwards
};
const FilterCase kFilterCases[] = {
    {"all lines, to the brighter side", 16,
     {{148, 147, 149, 148, 157, 158, 156, 154}, {149, 149, 149, 149, 158, 157, 156, 154}, {145, 149, 148, 145, 154, 156, 157, 156}, {145, 146, 147, 146, 156, 158, 158, 155}},
     {{149, 156}, {151, 156}, {147, 152}, {148, 154}}},
    {"all lines, to the darker side", 18,
     {{86, 89, 87, 88, 73, 73, 70, 70}, {86, 89, 89, 87, 71, 71, 73, 71}, {87, 89, 86, 90, 72, 72, 73, 72}, {87, 90, 89, 89, 71, 70, 71, 73}},
     {{85, 76}, {84, 74}, {86, 76}, {86, 74}}},
    {"the first lines' jumps are as they should be", 7,
     {{98, 96, 99, 98, 93, 93, 95, 93}, {99, 97, 97, 97, 95, 95, 91, 91}, {97, 96, 97, 100, 91, 91, 95, 94}, {99, 96, 96, 99, 91, 95, 91, 91}},
     {{98, 93}, {97, 95}, {98, 93}, {96, 94}}},
    {"too strong a seam for the quantiser", 1,
     {{82, 79, 81, 80, 68, 65, 66, 67}, {80, 78, 81, 81, 65, 65, 64, 68}, {79, 81, 80, 82, 68, 66, 65, 65}, {78, 78, 80, 81, 66, 66, 64, 64}},
     {{80, 68}, {81, 65}, {82, 68}, {81, 66}}},
    {"the first line is no seam", 9,
     {{73, 76, 73, 77, 55, 54, 53, 53}, {74, 77, 74, 77, 56, 54, 54, 57}, {74, 76, 77, 73, 54, 56, 54, 54}, {76, 75, 75, 75, 57, 53, 56, 53}},
     {{77, 55}, {72, 61}, {70, 57}, {72, 60}}},
    {"the third line decides for the others", 16,
     {{148, 147, 149, 148, 157, 158, 156, 154}, {149, 149, 149, 149, 158, 157, 156, 154}, {145, 145, 145, 145, 145, 145, 145, 145}, {145, 146, 147, 146, 156, 158, 158, 155}},
     {{148, 157}, {149, 158}, {145, 145}, {146, 156}}},
};
// clang-format on

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

TEST_P(KernelsTest, InversesAsTheFormatDoes) {
    for (const InverseCase& test_case : kInverseCases) {
        const int width = IsNarrow(test_case.shape) ? 4 : 8;
        const int height = IsLow(test_case.shape) ? 4 : 8;
        Block coefficients;
        for (int corner = 0; corner < 64; ++corner)  // every transform of the block has the same
            if (corner % 8 % width == 0 && corner / 8 % height == 0)
                for (const auto& [place, value] : test_case.coefficients)
                    coefficients.values[corner + place / width * 8 + place % width] =
                        static_cast<std::int16_t>(value);
        Block residual;
        Set().inverse(test_case.shape, residual.values, coefficients.values);
        for (int at = 0; at < 64; ++at)
            ASSERT_EQ(
                residual.values[at],
                test_case.residual[static_cast<std::size_t>(at / 8 % height * width + at % width)])
                << "shape " << static_cast<int>(test_case.shape) << " at " << at;
    }
}

TEST_P(KernelsTest, PredictsAsTheFormatDoes) {
    std::uint8_t source[24 * 24] = {};
    std::uint8_t* corner = source + 24 + 1;
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 7; ++x) source[24 * y + x] = static_cast<std::uint8_t>(kPicture[y][x]);
    std::uint8_t out[64] = {};
    const auto block = [&] {
        std::vector<int> values;
        for (int at = 0; at < 16; ++at) values.push_back(out[at / 4 * 8 + at % 4]);
        return values;
    };
    for (const auto& [x, y, rounding, expected] : kBicubicCases) {
        Set().bicubic(out, 8, corner, 24, 8, 8, x, y, rounding);
        EXPECT_EQ(block(), expected) << "bicubic " << x << "," << y << " rounding " << rounding;
    }
    for (const auto& [x, y, rounding, expected] : kBilinearCases) {
        Set().bilinear(out, 8, corner, 24, 8, 8, x, y, rounding);
        EXPECT_EQ(block(), expected) << "bilinear " << x << "," << y << " rounding " << rounding;
    }
    for (int y = 0; y < 2; ++y) std::copy_n(kChromaRows[y], 9, source + 24 * y);
    for (const auto& [x, y, rounding, expected] : kChromaCases) {
        Set().chroma(out, 8, source, 24, x, y, rounding);
        EXPECT_EQ(std::vector<int>(out, out + 8), expected)
            << "chroma " << x << "," << y << " rounding " << rounding;
    }
}

TEST_P(KernelsTest, FiltersEdgesAsTheFormatDoes) {
    for (const auto& [why, quantiser, lines, edge] : kFilterCases)
        for (const bool is_wanted : {false, true}) {
            const std::uint8_t segment = is_wanted ? 1 : 0;
            std::uint8_t upright[4][8];  // a vertical edge, and the same as a horizontal one
            std::uint8_t turned[8][4];
            for (int line = 0; line < 4; ++line)
                for (int i = 0; i < 8; ++i)
                    upright[line][i] = turned[i][line] = static_cast<std::uint8_t>(lines[line][i]);
            Set().filter_vertical(&upright[0][4], 8, &segment, 1, quantiser);
            Set().filter_horizontal(&turned[4][0], 4, &segment, 1, quantiser);
            for (int line = 0; line < 4; ++line)
                for (int i = 0; i < 8; ++i) {
                    const int expected =
                        is_wanted && (i == 3 || i == 4) ? edge[line][i - 3] : lines[line][i];
                    EXPECT_EQ(upright[line][i], expected) << why << ", line " << line;
                    EXPECT_EQ(turned[i][line], expected) << why << ", line " << line;
                }
        }
}

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
