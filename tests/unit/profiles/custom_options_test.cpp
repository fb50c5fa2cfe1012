#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "profiles/custom_audio.h"
#include "profiles/custom_video.h"
#include "profiles/profile_defaults.h"
#include "unit/profiles/profile_session.h"

namespace profiles {
namespace {

struct AudioCase {
    const char* why;
    std::optional<std::int32_t> mode;
    const char* codec;
    const char* setting;
    std::optional<std::int32_t> peak_bit_rate;
    std::optional<std::int32_t> peak_buffer;
    Lines calls;
    Lines printed;  // none = the options are right
};

// clang-format off
const AudioCase kAudioCases[] = {
    // why, -a_mode, -a_codec, -a_setting, -a_peakbitrate, -a_peakbuffer
    {"nothing given", {}, "", "", {}, {}, {}, {}},
    {"one pass", 0, "", "", {}, {}, {}, {}},
    {"two passes keep the rate control", 1, "", "", {}, {}, {"Audio.PreProcessPass=1"}, {}},
    {"quality", 2, "", "", {}, {}, {"VBRMode(audio, 0)=3"}, {}},
    {"bit rate-based", 3, "", "", {}, {}, {"VBRMode(audio, 0)=4", "Audio.PreProcessPass=1"}, {}},
    {"a mode too many stops the rest", 5, "PCM", "64_44_2", {}, {}, {}, {"Invalid -a_mode <mode_number>"}},
    {"order", 4, "WMA9PRO", "128_44_2_24", 200000, 4000,
     {"VBRMode(audio, 0)=2", "Audio.PreProcessPass=1", "AudioCodec(0)=1", "AudioBufferMax(0)=4000",
      "AudioPeakBitrate(0)=200000", "SetAudioConfig(0, 2, 44100, 128000, 24)"}, {}},
    {"peak of its own", 4, "", "128_44_2", {}, {},
     {"VBRMode(audio, 0)=2", "Audio.PreProcessPass=1", "AudioPeakBitrate(0)=192000",
      "SetAudioConfig(0, 2, 44100, 128000, 16)"}, {}},
    {"peak needs its mode", 3, "", "64_44_2", 90000, 4000,
     {"VBRMode(audio, 0)=4", "Audio.PreProcessPass=1", "SetAudioConfig(0, 2, 44100, 64000, 16)"},
     {}},
    {"quality beats the mode typed", 4, "", "q90_44_2", {}, {},
     {"VBRMode(audio, 0)=2", "Audio.PreProcessPass=1", "VBRMode(audio, 0)=3",
      "SetAudioConfig(0, 2, 44100, 90, 16)"}, {}},
    {"exact rates of PCM", {}, "PCM", "1411_44_2_16", {}, {}, {"AudioCodec(0)=4", "SetAudioConfig(0, 2, 44100, 1411200, 16)"}, {}},
    {"the rate that rounds to 706", {}, "", "706_22_2", {}, {}, {"SetAudioConfig(0, 2, 22050, 705600, 16)"}, {}},
    {"705", {}, "", "705_22_2", {}, {}, {"SetAudioConfig(0, 2, 22050, 705600, 16)"}, {}},
    {"353", {}, "", "353_11_2_20", {}, {}, {"SetAudioConfig(0, 2, 11025, 352800, 20)"}, {}},
    {"plain thousands", {}, "", "640_96_6_24", {}, {}, {"SetAudioConfig(0, 6, 96000, 640000, 24)"}, {}},
    {"88.2 kHz", {}, "", "440_88_8", {}, {}, {"SetAudioConfig(0, 8, 88200, 440000, 16)"}, {}},
    {"bit rate", {}, "", "50_45_3_8", {}, {}, {}, {"Invalid audio bit rate 50000"}},
    {"past 32 bits", {}, "", "2147484_44_2", {}, {}, {}, {"Invalid audio bit rate 2147484000"}},
    {"past what a peak can be", 4, "", "2147483_44_2", {}, {},
     {"VBRMode(audio, 0)=2", "Audio.PreProcessPass=1", "AudioPeakBitrate(0)=2147483647"},
     {"Invalid audio bit rate 2147483000"}},
    {"sampling rate", {}, "", "64_45_3_8", {}, {}, {}, {"Invalid audio sample rate 45000"}},
    {"channels", {}, "", "64_44_3_8", {}, {}, {}, {"Invalid audio channels 3"}},
    {"depth", {}, "", "64_44_2_8", {}, {}, {}, {"Invalid bits per sample 8"}},
    {"no number", {}, "", "64_fast_2", {}, {}, {}, {"Invalid format fast expecting integer value"}},
    {"a letter more than Q", {}, "", "QQ_44_2", {}, {}, {"VBRMode(audio, 0)=3"}, {"Invalid format Q expecting integer value"}},
    {"-1 is said too", {}, "", "64_-1_2", {}, {}, {}, {"Invalid format -1 expecting integer value"}},
    {"empty field", {}, "", "_44_2", {}, {}, {}, {"Invalid format  expecting integer value"}},
    {"fields missing, one line", {}, "", "64", {}, {}, {}, {"Invalid format  expecting integer value"}},
};
// clang-format on

TEST(CustomAudio, OptionsGoToTheAudienceInOrder) {
    for (const AudioCase& row : kAudioCases) {
        ProfileSession session;
        session.MakeAudience();
        session.settings.a_mode = row.mode;
        session.settings.a_codec = row.codec;
        session.settings.a_setting = row.setting;
        session.settings.a_peakbitrate = row.peak_bit_rate;
        session.settings.a_peakbuffer = row.peak_buffer;
        EXPECT_EQ(SetupCustomAudioProfile(session.state, session.settings, session.pane,
                                          session.audience()),
                  row.printed.empty())
            << row.why;
        EXPECT_EQ(session.log().lines, row.calls) << row.why;
        EXPECT_EQ(session.pane.lines, row.printed) << row.why;
        EXPECT_EQ(session.settings.a_mode,
                  platform::UpperCase(row.setting)[0] == 'Q' ? 2 : row.mode)
            << row.why;
    }
}

struct VideoCase {
    const char* why;
    cli::EncodeSettings settings;
    Lines calls;
    Lines printed = {};  // none = the options are right
};

TEST(CustomVideo, OptionsGoToTheAudienceInOrder) {
    const auto with = [](auto change) {
        cli::EncodeSettings settings;
        change(settings);
        return settings;
    };
    const VideoCase kCases[] = {
        {"nothing given", {}, {}},
        {"a mode too many stops the rest",
         with([](auto& s) { s.v_mode = 5, s.v_bitrate = 300000; }),
         {},
         {"Invalid -v_mode <mode_number>"}},
        {"one pass changes nothing", with([](auto& s) { s.v_mode = 0; }), {}},
        {"every plain option, no peak outside its mode",
         with([](auto& s) {
             s.v_mode = 1, s.v_codec = "WMV8", s.v_bitrate = 300000, s.v_width = 321;
             s.v_height = 0, s.v_framerate = 29970, s.v_keydist = 8000, s.v_buffer = 4000;
             s.v_quality = 0, s.v_peakbitrate = 400000, s.v_peakbuffer = 1, s.v_profile = "MP";
         }),
         {"Video.PreProcessPass=1", "VideoCodec(0)=1", "VideoBitrate(0)=300000",
          "VideoWidth(0)=321", "VideoHeight(0)=0", "VideoFPS(0)=29970",
          "VideoKeyFrameDistance(0)=8000", "VideoBufferSize(0)=4000", "VideoImageSharpness(0)=0",
          "Property(video, 0, DeviceConformanceTarget)=MP"}},
        {"quality goes where quality mode takes it",
         with([](auto& s) { s.v_mode = 2, s.v_quality = 90; }),
         {"VBRMode(video, 0)=3", "VideoCompressionQuality(0)=90"}},
        {"bit rate-based",
         with([](auto& s) { s.v_mode = 3, s.v_quality = 90; }),
         {"VBRMode(video, 0)=4", "Video.PreProcessPass=1", "VideoImageSharpness(0)=90"}},
        {"the bit rate is raised to the peak",
         with([](auto& s) {
             s.v_mode = 4, s.v_bitrate = 300000, s.v_peakbitrate = 450000, s.v_peakbuffer = 6000;
         }),
         {"VBRMode(video, 0)=2", "Video.PreProcessPass=1", "VideoBitrate(0)=300000",
          "VideoBufferMax(0)=6000", "VideoBitrate(0)=450000", "VideoPeakBitrate(0)=450000"}},
        {"a lower peak is passed on unchecked",
         with([](auto& s) { s.v_mode = 4, s.v_bitrate = 300000, s.v_peakbitrate = 200000; }),
         {"VBRMode(video, 0)=2", "Video.PreProcessPass=1", "VideoBitrate(0)=300000",
          "VideoPeakBitrate(0)=200000"}},
        {"half to even, on both",
         with([](auto& s) { s.v_mode = 4, s.v_bitrate = 3, s.v_peakbitrate = 4.5; }),
         {"VBRMode(video, 0)=2", "Video.PreProcessPass=1", "VideoBitrate(0)=3", "VideoBitrate(0)=4",
          "VideoPeakBitrate(0)=4"}},
    };
    for (const VideoCase& row : kCases) {
        ProfileSession session;
        session.MakeAudience();
        EXPECT_EQ(
            SetupCustomVideoProfile(session.state, row.settings, session.pane, session.audience()),
            row.printed.empty())
            << row.why;
        EXPECT_EQ(session.log().lines, row.calls) << row.why;
        EXPECT_EQ(session.pane.lines, row.printed) << row.why;
    }
}

TEST(CustomVideo, RatesPastTheEncodersRangeAreRefused) {
    ProfileSession session;
    session.MakeAudience();
    session.settings.v_mode = 4;
    session.settings.v_peakbitrate = 3.3e9;
    EXPECT_THROW(
        SetupCustomVideoProfile(session.state, session.settings, session.pane, session.audience()),
        platform::Error);
}

TEST(ProfileDefaults, NothingGiven) {
    cli::EncodeSettings settings;
    LoadProfileDefaults(settings);
    const cli::EncodeSettings defaults = {.a_codec = "WMA9STD",
                                          .a_mode = 0,
                                          .a_setting = "64_44_2",
                                          .a_peakbuffer = 3000,
                                          .v_codec = "WMV9",
                                          .v_mode = 0,
                                          .v_bitrate = 250000,
                                          .v_buffer = 5000,
                                          .v_width = 0,
                                          .v_height = 0,
                                          .v_keydist = 10000,
                                          .v_quality = 75,
                                          .v_peakbitrate = 375000,
                                          .v_peakbuffer = 5000};
    EXPECT_TRUE(settings == defaults);
}

TEST(ProfileDefaults, GivenValuesStayAndLeadTheOthers) {
    cli::EncodeSettings settings;
    settings.v_mode = 2;
    settings.v_bitrate = 100001;
    settings.v_width = 320;
    LoadProfileDefaults(settings);
    EXPECT_EQ(settings.v_quality, 95);
    EXPECT_EQ(settings.v_peakbitrate, 150001.5) << "rounded where it is passed on, not here";
    EXPECT_EQ(settings.v_width, 320);
    EXPECT_EQ(settings.v_height, 0);
}

TEST(ProfileDefaults, TheFormatFollowsModeAndCodec) {
    const struct {
        const char* why;
        std::optional<std::int32_t> mode;
        const char* codec;
        const char* given;
        const char* setting;
        const char* codec_after;
    } kCases[] = {
        {"quality", 2, "", "", "Q75_44_2", "WMA9STD"},
        {"quality, professional", 2, "WMA9PRO", "", "Q75_44_2_24", "WMA9PRO"},
        {"quality, lossless", 2, "WMA9LSL", "", "Q100_44_2_16", "WMA9LSL"},
        {"quality, voice", 2, "WMSP9", "", "Q75_44_2", "WMSP9"},
        {"voice", {}, "WMSP9", "", "12_16_1", "WMSP9"},
        {"uncompressed", 0, "PCM", "", "705_22_2", "PCM"},
        {"professional", 4, "WMA9PRO", "", "128_44_2_24", "WMA9PRO"},
        {"lossless has no row of its own here", 0, "WMA9LSL", "", "64_44_2", "WMA9LSL"},
        {"voice in two passes falls through", 1, "WMSP9", "", "64_44_2", "WMSP9"},
        {"uncompressed in peak falls through", 4, "PCM", "", "64_44_2", "PCM"},
        {"four fields: professional", {}, "WMA9LSL", "128_44_2_24", "128_44_2_24", "WMA9PRO"},
        {"quality in four fields too", {}, "WMA9LSL", "Q75_44_2_24", "Q75_44_2_24", "WMA9PRO"},
        {"but not a lossless format", {}, "WMA9LSL", "Q100_44_2_24", "Q100_44_2_24", "WMA9LSL"},
        {"three fields leave the codec", {}, "PCM", "1411_44_2", "1411_44_2", "PCM"},
        {"five fields too", {}, "PCM", "1411_44_2_16_", "1411_44_2_16_", "PCM"},
    };
    for (const auto& row : kCases) {
        cli::EncodeSettings settings;
        settings.a_mode = row.mode;
        settings.a_codec = row.codec;
        settings.a_setting = row.given;
        LoadProfileDefaults(settings);
        EXPECT_EQ(settings.a_setting, row.setting) << row.why;
        EXPECT_EQ(settings.a_codec, row.codec_after) << row.why;
    }
}

}  // namespace
}  // namespace profiles
