// What a chain of recorded frames says has changed.
#include "engine/base/av/frame_damage.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace engine {
namespace {

TEST(DamageSum, IsAllOfTheFrameWhereNothingElseIsKnown) {
    constexpr PixelBox kAll{0, 0, 64, 48};
    constexpr PixelBox kSmall{10, 10, 4, 4};
    constexpr PixelBox kOther{30, 20, 4, 4};
    struct Step {
        std::optional<FrameDamage> told;
        bool converted;  // other pixels were made of it
        bool coded;      // the sum begins anew after it
        PixelBox expected;
    };
    const std::vector<Step> steps = {
        {{{1, kSmall}}, false, true, kAll},  // the first
        {{{2, kSmall}}, false, true, kSmall},
        {{{2, kSmall}}, false, true, {}},  // given again
        {{{3, {}}}, false, false, {}},
        {{{4, kSmall}}, false, false, kSmall},  // dropped
        {{{5, kOther}}, false, true, {10, 10, 24, 14}},
        {{{7, kOther}}, false, true, kAll},  // the sixth never came
        {{{8, kOther}}, false, true, kOther},
        {{{9, kOther}}, true, true, kAll},
        {{{10, kOther}}, false, true, kAll},
        {std::nullopt, false, true, kAll},
    };
    DamageSum sum;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        std::uint8_t pixels[2] = {};
        const AvPtr<AVFrame> frame(av_frame_alloc());
        frame->width = kAll.width;
        frame->height = kAll.height;
        frame->data[0] = pixels;
        if (steps[i].told) TellDamage(*frame, *steps[i].told);
        if (steps[i].converted) frame->data[0] = pixels + 1;
        sum.Add(*frame);
        EXPECT_EQ(sum.Changed(), steps[i].expected) << "step " << i;
        if (steps[i].coded) sum.Restart();
    }
}

}  // namespace
}  // namespace engine
