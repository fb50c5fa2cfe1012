// Profiles on their way through files of the engine that is shipped.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "profiles/predefined_profiles.h"
#include "profiles/profile_setup.h"
#include "unit/profiles/engine_factory.h"
#include "unit/profiles/profile_session.h"

namespace profiles {
namespace {

using platform::SourceType;
using platform::WMEncAudience;
using platform::WMEncProfile2;

/// All that a profile says of the streams of its content kind.
std::string Facts(WMEncProfile2& profile) {
    std::string text = profile.ProfileName();
    const auto add = [&](auto value) { text += " " + testing::PrintToString(value); };
    const auto audience = profile.Audience(0);
    add(profile.MinPacketSize());
    add(profile.MaxPacketSize());
    if ((profile.ContentType() & platform::kContentAudio) != 0) {
        text += "\naudio";
        add(static_cast<int>(profile.VBRMode(SourceType::Audio, 0)));
        for (const auto value : {&WMEncAudience::AudioCodec, &WMEncAudience::AudioBitrate,
                                 &WMEncAudience::AudioSamplingRate, &WMEncAudience::AudioChannels,
                                 &WMEncAudience::AudioBitsPerSample, &WMEncAudience::AudioBufferMax,
                                 &WMEncAudience::AudioPeakBitrate})
            add(((*audience).*value)(0));
    }
    if ((profile.ContentType() & platform::kContentVideo) != 0) {
        text += "\nvideo";
        add(static_cast<int>(profile.VBRMode(SourceType::Video, 0)));
        add(profile.NonSquarePixelMode(0));
        add(profile.InterlaceMode(0));
        for (const auto value :
             {&WMEncAudience::VideoCodec, &WMEncAudience::VideoBitrate, &WMEncAudience::VideoWidth,
              &WMEncAudience::VideoHeight, &WMEncAudience::VideoFPS,
              &WMEncAudience::VideoKeyFrameDistance, &WMEncAudience::VideoBufferSize,
              &WMEncAudience::VideoImageSharpness, &WMEncAudience::VideoCompressionQuality,
              &WMEncAudience::VideoBufferMax, &WMEncAudience::VideoPeakBitrate})
            add(((*audience).*value)(0));
        const auto target = audience->Property(SourceType::Video, 0, "DeviceConformanceTarget");
        if (const auto* const conformance = std::get_if<std::string>(&target)) add(*conformance);
    }
    return text;
}

struct FileSession : ProfileSession {
    explicit FileSession(std::shared_ptr<test_support::FakeFileSystem> files = {},
                         std::int32_t content = platform::kContentAudioVideo) {
        if (files) factory.files = std::move(files);
        state.g_objFSO = factory.files;
        engine.files = factory.files;
        state.g_nContentType = content;
        if ((content & platform::kContentAudio) == 0) state.g_objSrcAud = nullptr;
        if ((content & platform::kContentVideo) == 0) state.g_objSrcVid = nullptr;
    }
    bool Run() { return setup.SetupProfile(); }
    std::string ProfileFacts() { return Facts(*state.g_objProfile); }

    EngineFactory engine;
    ProfileSetup setup{state, settings, pane, engine};
};

/// Saves the profile of these settings and loads it into another session.
void ExpectSameAfterFile(const cli::EncodeSettings& settings, std::int32_t content) {
    FileSession saved({}, content);
    const std::string input = saved.settings.input;
    saved.settings = settings;
    saved.settings.input = input;
    saved.settings.saveprofile = "kept.prx";
    ASSERT_TRUE(saved.Run()) << testing::PrintToString(saved.pane.lines);
    const std::string& bytes = saved.factory.files->files.at("/home/kept.prx");
    EXPECT_EQ(bytes.substr(0, 4), std::string("\xFF\xFE<\0", 4));

    FileSession loaded(saved.factory.files, content);
    loaded.settings.loadprofile = "kept.prx";
    ASSERT_TRUE(loaded.Run()) << testing::PrintToString(loaded.pane.lines);
    EXPECT_EQ(loaded.ProfileFacts(), saved.ProfileFacts());
    EXPECT_THAT(loaded.pane.lines, testing::IsEmpty());

    // What is saved again is the same, byte for byte.
    loaded.settings.saveprofile = "again.prx";
    ASSERT_TRUE(loaded.Run());
    EXPECT_EQ(saved.factory.files->files.at("/home/again.prx"), bytes);
}

TEST(ProfileFiles, EveryPredefinedProfileComesBackAsItWas) {
    for (const ProfileSummary& row : PredefinedProfiles()) {
        SCOPED_TRACE(row.code);
        cli::EncodeSettings settings;
        settings.profile = row.code;
        ExpectSameAfterFile(settings, (row.audio_bps != 0 ? platform::kContentAudio : 0) |
                                          (row.video_bps != 0 ? platform::kContentVideo : 0));
    }
}

TEST(ProfileFiles, EveryPairOfModesComesBackAsItWas) {
    for (int audio = 0; audio <= 4; ++audio) {
        for (int video = 0; video <= 4; ++video) {
            SCOPED_TRACE(testing::PrintToString(std::pair(audio, video)));
            cli::EncodeSettings settings;
            settings.a_mode = audio;
            settings.v_mode = video;
            ExpectSameAfterFile(settings, platform::kContentAudioVideo);
        }
    }
}

TEST(ProfileFiles, EverySettingComesBackAsItWas) {
    using Settings = cli::EncodeSettings;
    const struct {
        const char* why;
        std::function<void(Settings&)> change;
    } kCases[] = {
        {"lossless", [](auto& s) { s.a_codec = "WMA9LSL", s.a_mode = 2; }},
        {"professional", [](auto& s) { s.a_codec = "WMA9PRO", s.a_setting = "384_96_6_24"; }},
        {"voice", [](auto& s) { s.a_codec = "WMSP9"; }},
        {"uncompressed",
         [](auto& s) { s.a_codec = "PCM", s.v_codec = "UNCOMP", s.v_width = 321, s.v_height = 7; }},
        {"other video codecs", [](auto& s) { s.v_codec = "MP41"; }},
        {"a peak without a buffer", [](auto& s) { s.profile = "av350", s.v_mode = 4; }},
        {"a quality of nothing", [](auto& s) { s.v_mode = 2, s.v_quality = 0; }},
        {"a peak of nothing", [](auto& s) { s.v_mode = 4, s.v_peakbitrate = 0; }},
        {"a rate that no time of a frame has", [](auto& s) { s.v_framerate = 999983; }},
        {"a conformance", [](auto& s) { s.v_profile = "SP"; }},
        {"pixels and fields", [](auto& s) { s.pixelratio.x = 16, s.v_preproc = 17; }},
        {"key frames where the codec wants them", [](auto& s) { s.v_keydist = 0; }},
        {"the longest of all", [](auto& s) { s.v_keydist = 2147483647, s.v_buffer = 600000; }},
        {"the least packet", [](auto& s) { s.minpacket = 1000; }},
    };
    for (const auto& row : kCases) {
        SCOPED_TRACE(row.why);
        Settings settings;
        row.change(settings);
        ExpectSameAfterFile(settings, platform::kContentAudioVideo);
    }
}

TEST(ProfileFiles, AFileThatCannotBeLoadedLeavesTheProfileAsItWas) {
    FileSession session;
    session.settings.profile = "av100";
    ASSERT_TRUE(session.Run());
    const std::string before = session.ProfileFacts();
    session.factory.files->AddFile("/home/broken.prx", "<profile><streamconfig>");
    session.settings = {};
    session.settings.loadprofile = "broken.prx";
    EXPECT_FALSE(session.Run());
    EXPECT_THAT(session.pane.lines,
                testing::ElementsAre(testing::AllOf(
                    testing::StartsWith("Invalid profile: 0x8007000D The profile file "
                                        "/home/broken.prx cannot be loaded: "),
                    testing::HasSubstr("at line 1, column"))));
    // The steps behind the load go on, with the rate of an unknown input.
    const auto frame_rate = session.state.g_objProfile->Audience(0)->VideoFPS(0);
    session.state.g_objProfile->Audience(0)->SetVideoFPS(0, 30000);
    EXPECT_EQ(session.ProfileFacts(), before) << frame_rate;
}

TEST(ProfileFiles, AStreamThatAnOptionGivesIsAddedToALoadedProfile) {
    FileSession saved({}, platform::kContentVideo);
    saved.settings.profile = "v32";
    saved.settings.saveprofile = "silent.prx";
    ASSERT_TRUE(saved.Run());
    FileSession loaded(saved.factory.files);
    loaded.settings.loadprofile = "silent.prx";
    loaded.settings.a_setting = "64_44_2";
    loaded.settings.saveprofile = "both.prx";
    ASSERT_TRUE(loaded.Run());
    FileSession again(saved.factory.files);
    again.settings.loadprofile = "both.prx";
    ASSERT_TRUE(again.Run());
    EXPECT_EQ(again.state.g_objProfile->Audience(0)->AudioSamplingRate(0), 44100);
}

}  // namespace
}  // namespace profiles
