// What a plan takes over from the tree: as a whole, where streams begin and end, and the sound.
#include "unit/engine/prepare/plan_session.h"

namespace engine {
namespace {

using platform::SourceType;
using platform::VbrMode;
using test_support::FilmInfo;

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

struct JoinCase {
    const char* why;
    std::int32_t asked_ms;
    std::int32_t planned_ms;
};

constexpr JoinCase kJoinCases[] = {
    {"none asked for", 0, 10'000},
    {"too far apart to wait for", 60'000, 10'000},
    {"near enough", 3'000, 3'000},
};

TEST(Plan, WhatIsBroadcastCanBeJoinedSoon) {
    for (const JoinCase& c : kJoinCases) {
        SCOPED_TRACE(c.why);
        FilmSession session;
        session.Audience().SetVideoKeyFrameDistance(0, c.asked_ms);
        session.tree.broadcast.SetPortNumber(platform::BroadcastProtocol::Http, 8080);
        const EncodePlan both = session.Plan();
        EXPECT_EQ(both.video->key_frame_distance_ms, c.planned_ms);
        EXPECT_TRUE(both.IsStreamed());
        ASSERT_EQ(both.outputs.size(), 2U);
        EXPECT_EQ(std::get<BroadcastOutput>(both.outputs.front()).port, 8080);
        session.tree.file.SetLocalFileName("");
        EXPECT_EQ(session.Plan().outputs.size(), 1U) << "a file is not needed";
        session.tree.broadcast.SetPortNumber(platform::BroadcastProtocol::Http, 0);
        session.tree.file.SetLocalFileName("out.wmv");
        EXPECT_EQ(session.Plan().video->key_frame_distance_ms, c.asked_ms) << "a file has time";
    }
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

// Streams of one file end at different times; the file ends with the longer one.
TEST(InputPlans, EndMarkBetweenTheStreamsEndsIsGood) {
    Session session;
    session.engine.media["/home/film.avi"] = FilmInfo(9000, 10000);
    session.OpenFilm();
    session.Audio().SetMarkOut(9500);
    session.Video().SetMarkOut(9500);
    EXPECT_EQ(session.Plan().media_length, Ticks::FromMilliseconds(9500));
}

TEST(InputPlans, StillPictureLastsToItsEndMarkElseItsDuration) {
    struct Case {
        const char* why;
        int still_duration, mark_in, mark_out;  // 0 = not set
        int ends_at, length;
    };
    const Case cases[] = {
        {"ten seconds by default", 0, 0, 0, 10000, 10000},
        {"its duration", 3000, 0, 0, 3000, 3000},
        {"the end mark wins", 3000, 0, 60000, 60000, 60000},
        {"a start mark shortens it", 3000, 1000, 0, 3000, 2000},
        {"between marks", 0, 1000, 1500, 1500, 500},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        Session session;
        session.engine.media["/home/a.jpg"] = FilmInfo(0, 40);
        session.engine.media["/home/a.jpg"].video->still = true;
        session.OpenFilm("a.jpg");
        session.profile.SetContentType(platform::kContentVideo);
        if (c.still_duration != 0) session.Video().SetStillDuration(c.still_duration);
        session.Video().SetMarkIn(c.mark_in);
        session.Video().SetMarkOut(c.mark_out);
        const EncodePlan plan = session.Plan();
        EXPECT_TRUE(plan.video->input.still);
        EXPECT_EQ(plan.video->input.mark_out, Ticks::FromMilliseconds(c.ends_at));
        EXPECT_EQ(plan.media_length, Ticks::FromMilliseconds(c.length));
    }
}

// A session that is set up again starts from the codec and the mode that the last one left.
TEST(AudioPlan, IsJudgedByTheLastCodecAndMode) {
    const struct {
        const char* why;
        std::function<void(Session&)> set_up;
        AudioFormat format;
    } cases[] = {
        {"format before its codec",
         [](Session& s) {
             s.Audience().SetAudioConfig(0, 2, 44100, 128'000, 24);
             s.Audience().SetAudioCodec(0, 1);
         },
         {128'000, 44100, 2, 24}},
        {"rate before a quality, in a quality mode of before",
         [](Session& s) {
             s.profile.SetVBRMode(SourceType::Audio, 0, VbrMode::Quality);
             s.Audience().SetAudioConfig(0, 2, 32000, 48'000, 16);
             s.Audience().SetAudioConfig(0, 2, 44100, 75, 16);
         },
         {75, 44100, 2, 16}},
        {"rate before its mode",
         [](Session& s) {
             s.profile.SetVBRMode(SourceType::Audio, 0, VbrMode::Quality);
             s.Audience().SetAudioConfig(0, 2, 44100, 64'000, 16);
             s.profile.SetVBRMode(SourceType::Audio, 0, VbrMode::Constant);
         },
         {64'040, 44100, 2, 16}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        FilmSession session;
        c.set_up(session);
        EXPECT_EQ(session.Plan().audio->format, c.format);
    }
}

TEST(AudioPlan, AttributesDriveTheDownmixOfSixChannels) {
    struct Case {
        const char* why;
        int channels;
        std::vector<std::pair<const char*, std::int32_t>> attributes;
        Downmix levels;
    };
    const Case cases[] = {
        {"none: the usual", 6, {}, {3, 3, 144}},
        {"all", 6, {{"SurroundMix", -10}, {"CenterMix", -4}, {"LFEMix", -144}}, {10, 4, 144}},
        {"the others keep theirs", 6, {{"LFEMix", 0}}, {3, 3, 0}},
        {"nothing to fold, nothing to refuse", 2, {{"CenterMix", -200}}, {3, 3, 144}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        Session session;
        session.engine.media["/home/film.avi"].audio->channels = c.channels;
        session.OpenFilm();
        for (const auto& [name, value] : c.attributes) session.tree.attributes.Add(name, value);
        EXPECT_EQ(session.Plan().audio->downmix, c.levels);
    }
}

}  // namespace
}  // namespace engine
