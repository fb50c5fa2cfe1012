// The quick judgement of how hard a picture is to code.
#include "codecs/common/picture_cost.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace codecs;

// A picture within a larger one, so that rows and strides that are mixed up are noticed.
struct Canvas {
    std::vector<std::uint8_t> samples = std::vector<std::uint8_t>(64 * 40, 0);

    template <typename Pattern>
    explicit Canvas(Pattern&& pattern) {
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 64; ++x)
                samples[static_cast<std::size_t>(y * 64 + x)] =
                    x < 50 ? static_cast<std::uint8_t>(pattern(x, y)) : 255;
    }
    LumaPlane Plane() const { return {samples.data(), 64, 50, 40}; }
    LumaPlane Upturned() const { return {samples.data() + 64 * 39, -64, 50, 40}; }
};

TEST(PictureCost, GrowsWithDetailAndChange) {
    const Canvas flat([](int, int) { return 128; });
    const Canvas ramp([](int x, int) { return x; });
    const Canvas checks([](int x, int y) { return (x + y) % 2 == 0 ? 16 : 235; });
    const Canvas moved([](int x, int y) { return (x + y) % 2 == 1 ? 16 : 235; });

    EXPECT_EQ(IntraCost(flat.Plane()), 1);
    EXPECT_EQ(IntraCost(ramp.Plane()), 1 + 10 * 49);
    EXPECT_EQ(IntraCost(ramp.Upturned()), IntraCost(ramp.Plane()));
    EXPECT_EQ(IntraCost(checks.Plane()), 1 + 10 * (49 + 50) * 219);
    EXPECT_EQ(InterCost(checks.Plane(), checks.Plane()), 0);
    EXPECT_EQ(InterCost(checks.Plane(), moved.Plane()), 10 * 50 * 219);
    EXPECT_EQ(InterCost(checks.Upturned(), moved.Upturned()), 10 * 50 * 219);
}

TEST(PictureCost, TakesPicturesOfAnySize) {
    const std::uint8_t one = 77;
    EXPECT_EQ(IntraCost({&one, 1, 1, 1}), 1);
    EXPECT_EQ(InterCost({&one, 1, 1, 1}, {&one, 1, 1, 1}), 0);
    EXPECT_EQ(IntraCost({nullptr, 0, 0, 0}), 1);
}

}  // namespace
