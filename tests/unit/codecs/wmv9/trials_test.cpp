#include "codecs/wmv9/trials.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

namespace codecs::wmv9 {
namespace {

// What three pictures cost with the usual tools, with other ones, and with those again for 8x8.
struct ToolCase {
    const char* why;
    std::vector<double> usual;
    std::vector<double> bilinear;
    std::vector<double> bilinear_8x8;
    int best;          // of the three
    int coded_of_8x8;  // pictures
};

TEST(ToolTrial, FollowsWhatAllPicturesCostTogether) {
    const ToolCase cases[] = {
        {"cheaper at first alone", {100, 100, 100}, {99, 102, 110}, {99, 102, 110}, 0, 3},
        {"cheaper in the end alone", {100, 100, 100}, {100, 90, 90}, {98, 98, 98}, 1, 2},
        {"not by enough", {100, 100, 100}, {99.5, 99.5, 99.5}, {99.5, 99.5, 99.5}, 0, 3},
        {"hopeless from the start", {100, 100, 100}, {97, 97, 97}, {120, 10, 10}, 1, 1},
        {"the last ones", {100, 100, 100}, {97, 97, 97}, {95, 95, 95}, 2, 3},
    };
    const Preset& preset = PresetOf(60);
    const std::vector<PictureTools> tools = ToolsToTry(preset);
    ASSERT_EQ(tools.size(), 3U);
    for (const ToolCase& one : cases) {
        CodingState state;
        state.tools = tools[0];
        ToolTrial trial(preset, state.tools);
        const std::vector<double>* const costs[] = {&one.usual, &one.bilinear, &one.bilinear_8x8};
        int coded = 0;
        for (std::size_t i = 0; i < tools.size(); ++i) {
            trial.Begin(tools[i]);
            coded = 0;
            for (const double cost : *costs[i]) {
                ++coded;
                if (!trial.Add(cost)) break;
            }
            trial.End();
        }
        trial.Note(state);
        EXPECT_TRUE(state.tools == tools[static_cast<std::size_t>(one.best)]) << one.why;
        EXPECT_EQ(coded, one.coded_of_8x8) << one.why;
    }
}

TEST(ToolTrial, ComesLaterWhereItsOutcomeStays) {
    const Preset& preset = PresetOf(60);
    CodingState state;
    state.tools = UsualTools(preset);
    std::vector<int> distances;
    for (int i = 0; i < 6; ++i) {
        ToolTrial(preset, state.tools).Note(state);
        EXPECT_EQ(state.until_tools, state.tools_distance);
        distances.push_back(state.tools_distance);
    }
    EXPECT_EQ(distances, (std::vector<int>{6, 12, 24, 48, 48, 48}));
}

}  // namespace
}  // namespace codecs::wmv9
