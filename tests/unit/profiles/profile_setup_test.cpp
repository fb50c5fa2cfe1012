#include "profiles/profile_setup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "unit/profiles/profile_session.h"

namespace profiles {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct ProfileSetupTest : testing::Test, ProfileSession {
    bool Run() {
        log().lines.clear();
        pane.lines.clear();
        return setup.SetupProfile();
    }
    Lines Calls(const std::string& prefix) { return log().Of(prefix); }

    ProfileSetup setup{state, settings, pane, factory};
};

TEST_F(ProfileSetupTest, ACustomProfileTakesTheOptionsTwice) {
    settings.v_bitrate = 300000;
    settings.v_mode = 4;
    ASSERT_TRUE(Run());
    EXPECT_THAT(log().lines,
                ElementsAre("Profile.ContentType=17", "Profile.ProfileName=BVRXQProfile",
                            "AddAudience(10000000)", "MediaInfo.FileName=/home/clip.avi",
                            // As given; the rate of 30 frames stands in for none.
                            "VBRMode(video, 0)=2", "Video.PreProcessPass=1",
                            "VideoBitrate(0)=300000", "VideoFPS(0)=30000",
                            // With the defaults.
                            "AudioCodec(0)=0", "SetAudioConfig(0, 2, 44100, 64000, 16)",
                            "VBRMode(video, 0)=2", "Video.PreProcessPass=1", "VideoCodec(0)=2",
                            "VideoBitrate(0)=300000", "VideoWidth(0)=0", "VideoHeight(0)=0",
                            "VideoFPS(0)=30000", "VideoKeyFrameDistance(0)=10000",
                            "VideoBufferSize(0)=5000", "VideoImageSharpness(0)=75",
                            "VideoBufferMax(0)=5000", "VideoBitrate(0)=450000",
                            "VideoPeakBitrate(0)=450000", "Group.Profile=BVRXQProfile"));
    EXPECT_TRUE(state.g_bCustomProfile);
    EXPECT_THAT(pane.lines, IsEmpty());
}

TEST_F(ProfileSetupTest, OptionsOverrideAPredefinedProfile) {
    settings.profile = "av100_2p";
    settings.v_bitrate = 80000;
    ASSERT_TRUE(Run());
    EXPECT_THAT(Calls("VideoBitrate"),
                ElementsAre("VideoBitrate(0)=84000", "VideoBitrate(0)=80000"));
    EXPECT_EQ(settings.v_keydist, std::nullopt) << "no defaults are loaded";
    EXPECT_FALSE(state.g_bCustomProfile);

    // The flag and the profile stay for later commands, which then get no defaults.
    settings.profile.clear();
    ASSERT_TRUE(Run());
    EXPECT_THAT(
        log().lines,
        ElementsAre("Profile.ContentType=17", "Audience(0)", "MediaInfo.FileName=/home/clip.avi",
                    "VideoBitrate(0)=80000", "VideoFPS(0)=30000", "Group.Profile=BVRXQProfile"));
    EXPECT_EQ(factory.profiles.size(), 1U);
}

TEST_F(ProfileSetupTest, TheFrameRateOfTheSetUpIsTheHighestAndIsRestored) {
    const struct {
        const char* why;
        std::optional<float> typed;
        double input;
        std::int32_t used;  // over a predefined profile of 15 frames
    } kCases[] = {
        {"30 for none, above the input's", {}, 25, 30000},
        {"30 for none, below the input's", {}, 59.94, 59940},
        {"lower than the input's and the profile's", 10000, 12.5, 15000},
        {"between the profile's and the input's", 20000, 25, 25000},
        {"above all", 50000, 25, 50000},
        {"an unknown input counts as 100", 50000, 0, 100000},
    };
    for (const auto& row : kCases) {
        settings.v_framerate = row.typed;
        settings.profile = "av100";
        factory.media_info->frame_rate = row.input;
        ASSERT_TRUE(Run()) << row.why;
        EXPECT_EQ(audience().VideoFPS(0), row.used) << row.why;
        EXPECT_EQ(settings.v_framerate, row.typed) << row.why;
    }
}

TEST_F(ProfileSetupTest, TheFrameRateIsRestoredOnEveryWayOut) {
    const std::function<void(ProfileSetupTest&)> kFailures[] = {
        [](auto& test) { test.settings.profile = "none"; },
        [](auto& test) { test.settings.v_mode = 9; },
        [](auto& test) { test.settings.v_codec = "UNCOMP"; },
        [](auto& test) { test.log().Fail("VideoFPS", platform::kInvalidArgument, "no"); },
    };
    for (const auto& fail : kFailures) {
        fail(*this);
        settings.v_framerate = 12000;
        EXPECT_FALSE(Run());
        EXPECT_EQ(settings.v_framerate, 12000);
        EXPECT_EQ(pane.lines.size(), 1U);
        settings.profile.clear();
        settings.v_mode.reset();
        settings.v_codec.clear();
    }
}

TEST_F(ProfileSetupTest, AProfileFileBringsItsPassesAndFrameRate) {
    auto& loaded = MakeAudience();
    loaded.value_VideoFPS = 50000;
    settings.loadprofile = "two_pass.prx";
    profile().video_mode = platform::VbrMode::BitRate;
    profile().audio_mode = platform::VbrMode::Quality;
    ASSERT_TRUE(Run());
    EXPECT_THAT(
        log().lines,
        ElementsAre("Profile.ContentType=17", "Audience(0)", "MediaInfo.FileName=/home/clip.avi",
                    "Profile.LoadFromFile(/home/two_pass.prx)", "Audience(0)",
                    "Video.PreProcessPass=1", "VideoFPS(0)=50000", "Group.Profile="));
    EXPECT_FALSE(state.g_bCustomProfile);

    loaded.value_VideoFPS = 15000;
    profile().video_mode = platform::VbrMode::Quality;
    profile().audio_mode = platform::VbrMode::Peak;
    ASSERT_TRUE(Run());
    EXPECT_THAT(Calls("Video"), ElementsAre("VideoFPS(0)=30000", "VideoFPS(0)=30000"));
    EXPECT_THAT(Calls("Audio"), ElementsAre("Audio.PreProcessPass=1"));

    state.g_objSrcAud = nullptr;
    state.g_objSrcVid = nullptr;
    ASSERT_TRUE(Run());
    EXPECT_THAT(Calls("Video"), IsEmpty());
    EXPECT_THAT(Calls("Audio."), IsEmpty());
}

TEST_F(ProfileSetupTest, PictureModesAndPacketSizes) {
    const std::string attach = "Group.Profile=BVRXQProfile";
    // clang-format off
    const struct {
        const char* why;
        std::function<void(cli::EncodeSettings&)> change;
        Lines last_calls;
    } kCases[] = {
        {"one side of the ratio is enough", [](auto& s) { s.pixelratio.y = 11; }, {"NonSquarePixelMode(0)=true", attach}},
        {"a filter too low", [](auto& s) { s.v_preproc = 15; }, {"VideoFPS(0)=30000", attach}},
        {"first interlaced filter", [](auto& s) { s.v_preproc = 16; }, {"InterlaceMode(0)=true", attach}},
        {"last interlaced filter", [](auto& s) { s.v_preproc = 18; }, {"InterlaceMode(0)=true", attach}},
        {"smallest packet before, largest after", [](auto& s) { s.minpacket = 7, s.maxpacket = 9; },
         {"Profile.MinPacketSize=7", attach, "Profile.MaxPacketSize=9"}},
    };
    // clang-format on
    for (const auto& row : kCases) {
        settings = {};
        settings.profile = "av100";
        row.change(settings);
        ASSERT_TRUE(Run()) << row.why;
        EXPECT_EQ(Lines(log().lines.end() - static_cast<std::ptrdiff_t>(row.last_calls.size()),
                        log().lines.end()),
                  row.last_calls)
            << row.why;
    }
    EXPECT_EQ(group->profile->MaxPacketSize(), 9);
    EXPECT_EQ(profile().MaxPacketSize(), 0) << "the session's own profile is left alone";
}

TEST_F(ProfileSetupTest, UncompressedCodecsComeInPairs) {
    const std::string audio_wanted =
        "Audio codec must be uncompressed when using uncompressed video codec";
    const std::string video_wanted =
        "Video codec must be uncompressed when using uncompressed audio codec";
    const struct {
        const char* why;
        const char* audio;
        const char* video;
        bool one_only;
        std::string line;
    } kCases[] = {
        {"no audio codec yet", "", "UNCOMP", false, audio_wanted},
        {"another audio codec", "WMA9STD", "UNCOMP", false, audio_wanted},
        {"no video codec yet", "PCM", "", false, video_wanted},
        {"both", "PCM", "UNCOMP", false, ""},
        {"one kind of stream only", "PCM", "", true, ""},
        {"compared as they stand", "pcm", "uncomp", false, ""},
    };
    for (const auto& row : kCases) {
        settings = {};
        settings.a_codec = row.audio;
        settings.v_codec = row.video;
        settings.audioonly = row.one_only;
        EXPECT_EQ(Run(), row.line.empty()) << row.why;
        EXPECT_EQ(pane.lines, row.line.empty() ? Lines{} : Lines{row.line}) << row.why;
    }
}

TEST_F(ProfileSetupTest, EncoderErrorsAreToldOnceTheFirstOne) {
    settings.profile = "av100";
    settings.minpacket = 1;
    settings.saveprofile = "kept.prx";
    log().Fail("SetAudioConfig", platform::kInvalidArgument, "no such format");
    log().Fail("Profile.MinPacketSize", platform::kUnspecified, "too small");
    EXPECT_FALSE(Run());
    EXPECT_THAT(pane.lines, ElementsAre("Invalid profile: 0x80070057 no such format"));
    EXPECT_TRUE(log().Has("Group.Profile=BVRXQProfile")) << "the steps go on";
    EXPECT_THAT(Calls("Profile.SaveToFile"), IsEmpty());
}

TEST_F(ProfileSetupTest, ARefusalIsTheOnlyLine) {
    const struct {
        const char* why;
        std::function<void(ProfileSetupTest&)> arrange;
        std::string line;
    } kCases[] = {
        {"a reader's line", [](auto& test) { test.settings.a_setting = "64_44_x"; },
         "Invalid format x expecting integer value"},
        {"in the pass with the defaults",
         [](auto& test) {
             test.settings.a_setting = "1411_44_2_16";
             test.settings.a_codec = "PCM";
             test.settings.v_codec = "UNCOMP";
         },
         "Audio codec must be uncompressed when using uncompressed video codec"},
        {"after an error that was kept",
         [](auto& test) {
             test.settings.profile = "av100";
             test.settings.v_mode = 7;
             test.log().Fail("VideoWidth", platform::kUnspecified, "no width");
         },
         "Invalid -v_mode <mode_number>"},
    };
    for (const auto& row : kCases) {
        settings = {};
        row.arrange(*this);
        EXPECT_FALSE(Run()) << row.why;
        EXPECT_EQ(pane.lines, Lines{row.line}) << row.why;
    }
}

TEST_F(ProfileSetupTest, AProfileThatCannotBeMadeIsTriedAgain) {
    log().Fail("AddAudience", platform::kUnspecified, "no audience", 1);
    EXPECT_FALSE(Run());
    EXPECT_THAT(pane.lines, ElementsAre("Invalid profile: 0x80004005 no audience"));
    EXPECT_TRUE(Run());
    EXPECT_EQ(profile().AudienceCount(), 1);
}

TEST_F(ProfileSetupTest, SavingPassesTheNameAsTyped) {
    settings.saveprofile = "kept.prx";
    EXPECT_TRUE(Run());
    EXPECT_EQ(log().lines.back(), "Profile.SaveToFile(kept.prx)");

    log().Fail("Profile.SaveToFile", platform::kAccessDenied, "kept.prx cannot be written");
    EXPECT_FALSE(Run());
    EXPECT_THAT(pane.lines, ElementsAre("Invalid profile: 0x80070005 kept.prx cannot be written"));
}

TEST_F(ProfileSetupTest, OnlyStreamsWithASourceAreSet) {
    state.g_objSrcAud = nullptr;
    state.g_nContentType = platform::kContentVideo;
    settings.a_mode = 9;
    EXPECT_TRUE(Run()) << "the audio options are not looked at";
    EXPECT_THAT(Calls("Audio"), IsEmpty());
    EXPECT_THAT(Calls("Profile.ContentType"), ElementsAre("Profile.ContentType=16"));
}

}  // namespace
}  // namespace profiles
