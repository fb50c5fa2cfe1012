#include "session/source_setup.h"

#include "session_test.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct SourceSession : Session {
    session::SourceSetup setup{state, settings, pane, factory};
};

constexpr const char* kNoScaling =
    "Preprocessing mode not supported. Use -height and -width to adjust video size.";

Change Preproc(std::int32_t filter) { return Set(&Settings::v_preproc, filter); }

struct VideoCase {
    const char* why;
    Change change;
    Lines calls;
    Lines lines = {};
};

// clang-format off
const VideoCase kVideoCases[] = {
    // why, settings, calls, lines
    {"no filter given", Set(), {}},
    {"off is a value of its own", Preproc(0), {"Video.Optimization=1"}},
    {"plain deinterlacing", Preproc(1), {"Video.Optimization=2"}},
    {"first scaling mode", Preproc(2), {"Video.Optimization=2"}, {kNoScaling}},
    {"last scaling mode", Preproc(4), {"Video.Optimization=2"}, {kNoScaling}},
    {"inverse telecine", Preproc(5), {"Video.Optimization=3"}},
    {"first telecine pattern", Preproc(6), {"Video.Optimization=35"}},
    {"last telecine pattern", Preproc(15), {"Video.Optimization=179"}},
    {"interlaced, order of the fields found out", Preproc(16), {"Video.Optimization=4"}},
    {"interlaced, top field first", Preproc(17), {"Video.Optimization=8196"}},
    {"interlaced, bottom field first", Preproc(18), {"Video.Optimization=12292"}},
    {"past the last filter", Preproc(19), {}},
    {"a format in any case", Set(&Settings::pixelformat, "yuy2"), {"Video.PixelFormat=" + std::to_string(platform::FourCC("YUY2"))}},
    {"a format past 31 bits", Set(&Settings::pixelformat, "RGB24"), {"Video.PixelFormat=" + std::to_string(0xE436EB7DU)}},
    {"an unknown format is left out", Set(&Settings::pixelformat, "NV12"), {}},
    {"only one side of the ratio", Set(&Settings::pixelratio, cli::PixelRatioSettings{8, {}}), {"Video.PixelAspectRatioX=8"}},
    {"the other side", Set(&Settings::pixelratio, cli::PixelRatioSettings{{}, 9}), {"Video.PixelAspectRatioY=9"}},
    {"the fastest is a value", Set(&Settings::v_performance, 0), {"Encoder.VideoPerformance=0"}},
    {"margins in the encoder's order, 0 is one", Set(&Settings::v_clip, cli::ClipSettings{1, 2, 3, 0}),
     {"Video.CroppingLeftMargin=1", "Video.CroppingRightMargin=3", "Video.CroppingTopMargin=2",
      "Video.CroppingBottomMargin=0"}},
    {"a duration of this command", Set(&Settings::duration, 5, &Settings::duration_typed, true), {"Video.StillDuration=5000"}},
    {"a duration carried over", Set(&Settings::duration, 5), {}},
    {"no duration to last", Set(&Settings::duration, 0, &Settings::duration_typed, true), {}},
    {"longer than milliseconds can say", Set(&Settings::duration, 3e6, &Settings::duration_typed, true), {"Video.StillDuration=2147483647"}},
};
// clang-format on

TEST(SourceSetup, VideoOptions) {
    for (const VideoCase& each : kVideoCases) {
        SCOPED_TRACE(each.why);
        SourceSession session;
        session.AddSources(false, true);
        each.change(session.settings);
        EXPECT_TRUE(session.setup.SetupVideoSource());
        EXPECT_EQ(session.TakeCalls(), each.calls);
        EXPECT_EQ(session.pane.lines, each.lines);
    }
}

TEST(SourceSetup, AScreenIsNoStillPicture) {
    SourceSession session;
    session.AddSources(false, true);
    session.state.g_objSrcVid->SetInput("screencap1", "screencap");
    session.TakeCalls();
    session.settings.duration = 5;
    session.settings.duration_typed = true;
    EXPECT_TRUE(session.setup.SetupVideoSource());
    EXPECT_THAT(session.TakeCalls(), IsEmpty());
}

TEST(SourceSetup, AudioOptions) {
    SourceSession session;
    session.AddSources(true, false);
    EXPECT_TRUE(session.setup.SetupAudioSource());
    EXPECT_THAT(session.TakeCalls(), IsEmpty());
    session.settings.a_content = 0;
    session.settings.a_contentedl = "speech.edl";
    EXPECT_TRUE(session.setup.SetupAudioSource());
    EXPECT_THAT(session.TakeCalls(),
                ElementsAre("Audio.ContentMode=0", "Audio.ContentEDL=speech.edl"));
}

TEST(SourceSetup, OneEmptyGroupWithoutASessionFile) {
    SourceSession session;
    EXPECT_TRUE(session.setup.CreateSourceGroup());
    ASSERT_EQ(session.encoder().groups.Count(), 1);
    EXPECT_EQ(session.state.g_objSrcGrp->Name(), "SG_1");
    EXPECT_TRUE(session.state.g_bCustomProfile);
}

TEST(SourceSetup, SessionFileGivesItsSourcesAndProfile) {
    SourceSession session;
    session.settings.wme = "show.wme";
    session.encoder().loaded_audio = false;
    EXPECT_TRUE(session.setup.CreateSourceGroup());
    EXPECT_TRUE(session.factory.log->Has("Encoder.Load(/home/show.wme)"));
    EXPECT_EQ(session.state.g_objSrcGrp->Name(), "loaded");
    EXPECT_EQ(session.state.g_objSrcAud, nullptr);
    EXPECT_NE(session.state.g_objSrcVid, nullptr);
    EXPECT_EQ(session.state.AudioCodecName, "");
    EXPECT_EQ(session.state.VideoCodecName, "Windows Media Video 7");
    EXPECT_EQ(session.state.g_objProfile, session.factory.profiles.back());
    EXPECT_FALSE(session.state.g_bCustomProfile);
    EXPECT_EQ(session.settings.maxpacket, 0) << "the profile's own";
}

TEST(SourceSetup, GivenPacketSizeOutweighsTheSessionFile) {
    SourceSession session;
    session.settings.wme = "show.wme";
    session.settings.maxpacket = 1400;
    EXPECT_TRUE(session.setup.CreateSourceGroup());
    EXPECT_EQ(session.settings.maxpacket, 1400);
}

TEST(SourceSetup, SessionFileThatCannotBeLoaded) {
    for (const char* operation : {"Encoder.Load", "Profile.LoadFromIWMProfile", "Source"}) {
        SCOPED_TRACE(operation);
        SourceSession session;
        const auto earlier = session.factory.MakeProfile();
        session.state.g_objProfile = earlier;
        session.settings.wme = "show.wme";
        session.factory.log->Fail(operation, platform::kInvalidData, "broken");
        EXPECT_FALSE(session.setup.CreateSourceGroup());
        EXPECT_THAT(session.pane.lines,
                    ElementsAre("Loading the session (.wme) file failed: show.wme"));
        EXPECT_EQ(session.state.g_objProfile, earlier) << "later commands still have a whole one";
        EXPECT_TRUE(session.state.g_bCustomProfile);
    }
}

}  // namespace
