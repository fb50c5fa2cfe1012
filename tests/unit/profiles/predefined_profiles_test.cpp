#include "profiles/predefined_profiles.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "profiles/audience_setup.h"
#include "unit/profiles/profile_session.h"

namespace profiles {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct CodeCase {
    const char* code;
    const char* audio;  // channels, Hz, bits per second
    const char* video;  // codec, bits per second, size, thousandths of a frame per second, quality
};

// clang-format off
const CodeCase kCodeCases[] = {
    {"av20",     "1 8000 5000",     "WMV9 15000 160x120 15000 Q75"},
    {"av32",     "1 11025 10168",   "WMV9 22000 176x144 15000 Q75"},
    {"av100",    "1 16000 16000",   "WMV9 84000 320x240 15000 Q75"},
    {"av225",    "2 32000 40000",   "WMV9 185000 320x240 30000 Q75"},
    {"av350",    "2 32000 48000",   "WMV9 302000 320x240 30000 Q75"},
    {"av450",    "2 44100 64040",   "WMV9 386000 320x240 30000 Q75"},
    {"av700",    "2 44100 64040",   "WMV9 636000 320x240 30000 Q75"},
    {"av1400",   "2 44100 128040",  "WMV9 1272000 320x240 30000 Q75"},
    {"av350pal", "2 32000 48000",   "WMV9 302000 384x288 25000 Q75"},
    {"av700pal", "2 44100 64040",   "WMV9 636000 384x288 25000 Q75"},
    {"av100_2p", "1 16000 16000",   "WMV9 84000 320x240 15000 Q75"},
    {"av350_2p", "2 32000 48000",   "WMV9 302000 320x240 30000 Q75"},
    {"av600vbr", "2 44100 64040",   "WMV9 536000 320x240 24000 Q75"},
    {"avq97vbr", "2 44100 64040",   "WMV9 536000 320x240 24000 Q97"},
    {"scrn",     "-",               "WMS9 2048000 0x0 5000 Q50"},
    {"scrna",    "2 32000 48024",   "WMS9 2000000 0x0 5000 Q50"},
    {"scrnab",   "2 32000 32000",   "WMS9 2016000 0x0 5000 Q50"},
    {"scrn10a",  "2 32000 48024",   "WMS9 2000000 0x0 10000 Q50"},
    {"scrn15a",  "2 32000 48024",   "WMS9 2000000 0x0 15000 Q50"},
    {"scrn24a",  "2 32000 48024",   "WMS9 2000000 0x0 24000 Q50"},
    {"scrn30a",  "2 32000 48024",   "WMS9 2000000 0x0 30000 Q50"},
    {"scrn10",   "-",               "WMS9 2048000 0x0 10000 Q50"},
    {"scrn15",   "-",               "WMS9 2048000 0x0 15000 Q50"},
    {"scrn24",   "-",               "WMS9 2048000 0x0 24000 Q50"},
    {"scrn30",   "-",               "WMS9 2048000 0x0 30000 Q50"},
    {"a20_1",    "1 22050 20008",   "-"},
    {"a20_2",    "2 22050 20008",   "-"},
    {"a32",      "2 32000 32000",   "-"},
    {"a48",      "2 32000 48024",   "-"},
    {"a64",      "2 44100 64016",   "-"},
    {"a96",      "2 44100 96024",   "-"},
    {"a128",     "2 44100 128016",  "-"},
    {"v20",      "-",               "WMV9 20000 176x144 15000 Q75"},
    {"v32",      "-",               "WMV9 32000 240x176 15000 Q75"},
};
// clang-format on

std::string AudioOf(const test_support::FakeAudience& audience) {
    if (audience.audio_channels == 0) return "-";
    return fmt::format("{} {} {}", audience.audio_channels, audience.audio_sampling_rate,
                       audience.audio_bit_rate);
}

std::string VideoOf(const test_support::FakeAudience& audience) {
    if (audience.VideoBitrate(0) == 0) return "-";
    return fmt::format("{} {} {}x{} {} Q{}", audience.VideoCodec(0) == 3 ? "WMS9" : "WMV9",
                       audience.VideoBitrate(0), audience.VideoWidth(0), audience.VideoHeight(0),
                       audience.VideoFPS(0),
                       audience.VideoImageSharpness(0) + audience.VideoCompressionQuality(0));
}

TEST(PredefinedProfiles, EveryCodeFillsTheAudience) {
    for (const CodeCase& row : kCodeCases) {
        ProfileSession session;
        const auto& audience = session.MakeAudience();
        session.settings.profile = row.code;
        EXPECT_TRUE(SetupPredefinedProfile(session.state, session.settings, session.pane,
                                           session.audience()))
            << row.code;
        EXPECT_EQ(AudioOf(audience), row.audio) << row.code;
        EXPECT_EQ(VideoOf(audience), row.video) << row.code;
        const bool video = std::string(row.video) != "-";
        EXPECT_EQ(audience.VideoBufferSize(0), video ? 5000 : 0) << row.code;
        EXPECT_EQ(audience.VideoKeyFrameDistance(0), video ? 10000 : 0) << row.code;
        EXPECT_EQ(session.state.AudioCodecName,
                  std::string(row.audio) == "-" ? "" : "Windows Media Audio 9")
            << row.code;
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
        {"two passes over both", "av100_2p", true, true,
         {"VideoImageSharpness(0)=75", "Audio.PreProcessPass=1", "Video.PreProcessPass=1"}},
        {"no sound", "av350_2p", false, true,
         {"VideoImageSharpness(0)=75", "Video.PreProcessPass=1"}},
        {"no picture", "av350_2p", true, false,
         {"VideoImageSharpness(0)=75", "Audio.PreProcessPass=1"}},
        {"peak, in any case", "Av600VBR", true, true,
         {"VBRMode(video, 0)=2", "VideoImageSharpness(0)=75", "VideoPeakBitrate(0)=804000",
          "VideoBufferMax(0)=5000", "Video.Optimization=3", "Video.PreProcessPass=1"}},
        {"peak without a picture", "av600vbr", true, false,
         {"VBRMode(video, 0)=2", "VideoImageSharpness(0)=75", "VideoPeakBitrate(0)=804000",
          "VideoBufferMax(0)=5000"}},
        {"quality, one pass", "avq97vbr", true, true,
         {"VBRMode(video, 0)=3", "VideoCompressionQuality(0)=97", "Video.Optimization=3"}},
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
        float setting;
        std::int32_t set;
        float left;
    } kCases[] = {
        {"not given", -1, 15000, 15000},
        {"lower than the profile's", 10000, 15000, 15000},
        {"higher than the profile's", 29970, 29970, 29970},
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
