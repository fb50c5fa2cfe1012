// What a plan takes over from the tree as a whole.
#include "unit/engine/prepare/plan_session.h"

namespace engine {
namespace {

using platform::SourceType;
using platform::VbrMode;

TEST(Plan, TakesOverWhatTheTreeSays) {
    FilmSession session;
    session.Audio().SetMarkIn(1000);
    session.Video().SetMarkIn(1000);
    session.Video().SetMarkOut(4000);
    session.Video().SetOptimization(3);
    session.Video().SetPreProcessPass(1);
    session.profile.SetMaxPacketSize(1400);
    session.tree.video_performance = 80;
    session.tree.display.SetTitle("T");
    session.tree.attributes.Add("CenterMix", -3);
    session.tree.attributes.Add("CenterMix", -4);
    const EncodePlan plan = session.Plan();

    ASSERT_TRUE(plan.audio && plan.video);
    EXPECT_EQ(plan.passes, 2);
    EXPECT_EQ(plan.media_length, Ticks::FromMilliseconds(9000)) << "the longer stream";
    EXPECT_EQ(plan.FilePath(), "/home/out.wmv");
    EXPECT_EQ(plan.content.title, "T");
    ASSERT_EQ(plan.attributes.size(), 1U) << "an attribute that is set again is not written twice";
    EXPECT_EQ(plan.attributes[0].second, platform::AttributeValue(-4));
    EXPECT_EQ(plan.max_packet_bytes, 1400U);

    EXPECT_EQ(plan.audio->input.path, "/home/film.avi");
    EXPECT_EQ(plan.audio->input.mark_out, Ticks{});
    EXPECT_EQ(plan.audio->format, (AudioFormat{64040, 44100, 2, 16}));
    EXPECT_EQ(plan.audio->codec_name, "Windows Media Audio 9");
    EXPECT_EQ(plan.audio->codec_description, "64 kbps, 44 kHz, stereo CBR");
    EXPECT_EQ(plan.video->input.mark_out, Ticks::FromMilliseconds(4000));
    EXPECT_EQ(plan.video->codec_description, "300 kbps CBR");
    EXPECT_EQ(plan.video->expected_rate, 29970) << "the source's, below the ceiling";
    EXPECT_EQ(plan.video->rate_ceiling, 100'000);
    EXPECT_EQ(plan.video->performance, 80);
    EXPECT_TRUE(plan.video->remove_telecine);
}

TEST(Plan, SaysWhenTheOutputsNamePromisesAnotherKindOfFile) {
    const auto notices = [](const char* output) {
        FilmSession session;
        session.tree.file.SetLocalFileName(output);
        return session.Plan().notices;
    };
    for (const char* output : {"out.mp4", "out.x.MKV"})
        EXPECT_THAT(notices(output), testing::Contains(testing::HasSubstr(".wmv is what")));
    for (const char* output : {"out.wmv", "out", "mp4"})
        EXPECT_THAT(notices(output), testing::IsEmpty());
}

TEST(Plan, OnlyStreamsOfTheContentKindLive) {
    FilmSession session;
    session.Video().SetPixelFormat(kRgb8);  // would be refused
    session.Video().SetPreProcessPass(1);
    session.profile.SetContentType(platform::kContentAudio);
    const EncodePlan plan = session.Plan();
    EXPECT_TRUE(plan.audio);
    EXPECT_FALSE(plan.video);
    EXPECT_EQ(plan.passes, 1) << "a resting source asks for no pass";
}

TEST(Plan, VariableRatesWithoutPreprocessingRunOnePass) {
    for (const VbrMode mode : {VbrMode::Peak, VbrMode::BitRate}) {
        FilmSession session;
        session.profile.SetVBRMode(SourceType::Video, 0, mode);
        const EncodePlan plan = session.Plan();
        EXPECT_EQ(plan.passes, 1);
        EXPECT_EQ(plan.video->peak_rate_bps, mode == VbrMode::Peak ? 450'000 : 0)
            << "a peak that is not given is half as much again";
    }
}

}  // namespace
}  // namespace engine
