#include "profiles/predefined_profiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "profiles/audience_setup.h"
#include "unit/profiles/profile_session.h"

namespace profiles {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The streams of every code stand in the command reference, which a test compares with these.
TEST(PredefinedProfiles, StreamsHaveTheirBuffersAndDistancesAndNoOthers) {
    const struct {
        const char* code;
        bool audio, video;
    } kCases[] = {{"av100", true, true}, {"a64", true, false}, {"v20", false, true}};
    for (const auto& row : kCases) {
        SCOPED_TRACE(row.code);
        ProfileSession session;
        const auto& audience = session.MakeAudience();
        session.settings.profile = row.code;
        EXPECT_TRUE(SetupPredefinedProfile(session.state, session.settings, session.pane,
                                           session.audience()));
        EXPECT_EQ(audience.audio_bits, row.audio ? 16 : 0);
        EXPECT_EQ(session.state.AudioCodecName, row.audio ? "Windows Media Audio 9" : "");
        EXPECT_EQ(audience.VideoBitrate(0) != 0, row.video);
        EXPECT_EQ(audience.VideoBufferSize(0), row.video ? 5000 : 0);
        EXPECT_EQ(audience.VideoKeyFrameDistance(0), row.video ? 10000 : 0);
    }
}

struct ExtraCase {
    const char* why;
    const char* code;
    bool audio_source;
    bool video_source;
    Lines calls;  // beside the audience's own stream properties
};

TEST(PredefinedProfiles, ExtrasTouchTheSourcesThatExist) {
    // clang-format off
    const ExtraCase kCases[] = {
        {"two passes over both", "av100_2p", true, true, {"VideoImageSharpness(0)=75", "Audio.PreProcessPass=1", "Video.PreProcessPass=1"}},
        {"no sound", "av350_2p", false, true, {"VideoImageSharpness(0)=75", "Video.PreProcessPass=1"}},
        {"no picture", "av350_2p", true, false, {"VideoImageSharpness(0)=75", "Audio.PreProcessPass=1"}},
        {"peak, in any case", "Av600VBR", true, true,
         {"VBRMode(video, 0)=2", "VideoImageSharpness(0)=75", "VideoPeakBitrate(0)=804000",
          "VideoBufferMax(0)=5000", "Video.Optimization=3", "Video.PreProcessPass=1"}},
        {"peak without a picture", "av600vbr", true, false,
         {"VBRMode(video, 0)=2", "VideoImageSharpness(0)=75", "VideoPeakBitrate(0)=804000",
          "VideoBufferMax(0)=5000"}},
        {"quality, one pass", "avq97vbr", true, true, {"VBRMode(video, 0)=3", "VideoCompressionQuality(0)=97", "Video.Optimization=3"}},
        {"none", "av100", true, true, {"VideoImageSharpness(0)=75"}},
    };
    // clang-format on
    for (const ExtraCase& row : kCases) {
        ProfileSession session;
        session.MakeAudience();
        if (!row.audio_source) session.state.g_objSrcAud = nullptr;
        if (!row.video_source) session.state.g_objSrcVid = nullptr;
        session.settings.profile = row.code;
        SetupPredefinedProfile(session.state, session.settings, session.pane, session.audience());
        const Lines plain = {
            "AudioCodec",     "SetAudioConfig", "VideoCodec", "VideoBitrate",
            "VideoWidth",     "VideoHeight",    "VideoFPS",   "VideoKeyFrameDistance",
            "VideoBufferSize"};
        Lines calls;
        for (const std::string& line : session.log().lines)
            if (std::ranges::find(plain, line.substr(0, line.find('('))) == plain.end())
                calls.push_back(line);
        EXPECT_EQ(calls, row.calls) << row.why;
    }
}

TEST(PredefinedProfiles, AudioComesBeforeVideoAndEachInItsOrder) {
    ProfileSession session;
    session.MakeAudience();
    session.settings.profile = "scrna";
    SetupPredefinedProfile(session.state, session.settings, session.pane, session.audience());
    EXPECT_THAT(
        session.log().lines,
        ElementsAre("AudioCodec(0)=0", "SetAudioConfig(0, 2, 32000, 48024, 16)", "VideoCodec(0)=3",
                    "VideoBitrate(0)=2000000", "VideoWidth(0)=0", "VideoHeight(0)=0",
                    "VideoFPS(0)=5000", "VideoKeyFrameDistance(0)=10000", "VideoBufferSize(0)=5000",
                    "VideoImageSharpness(0)=50"));
    EXPECT_EQ(session.state.VideoCodecName, "Windows Media Video 9 Screen");
}

TEST(PredefinedProfiles, AnUnknownCodeSetsNothing) {
    for (const char* code : {"scrn5", "av", "av350 ", "WMV9"}) {
        ProfileSession session;
        session.MakeAudience();
        session.settings.profile = code;
        EXPECT_FALSE(SetupPredefinedProfile(session.state, session.settings, session.pane,
                                            session.audience()))
            << code;
        EXPECT_THAT(session.pane.Take(), ElementsAre("No predefined profile found.")) << code;
        EXPECT_THAT(session.log().lines, IsEmpty()) << code;
    }
}

TEST(AudienceSetup, TheHigherFrameRateWinsAndStays) {
    const struct {
        const char* why;
        std::optional<float> setting;
        std::int32_t set;
        float left;
    } kCases[] = {
        {"not given", {}, 15000, 15000},
        {"half to even", 15000.5F, 15000, 15000.5F},
        {"half to even, upwards", 15001.5F, 15002, 15001.5F},
    };
    for (const auto& row : kCases) {
        ProfileSession session;
        auto& audience = session.MakeAudience();
        session.settings.v_framerate = row.setting;
        SetupVideoAudience(session.state, session.settings, audience,
                           {"WMV9", 1000, 0, 0, 15000, 5000, 75, 10000});
        EXPECT_EQ(audience.VideoFPS(0), row.set) << row.why;
        EXPECT_EQ(session.settings.v_framerate, row.left) << row.why;
    }
}

}  // namespace
}  // namespace profiles
