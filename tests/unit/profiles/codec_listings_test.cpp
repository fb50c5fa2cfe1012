#include "profiles/codec_listings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/pixel_format_table.h"
#include "profiles/codec_catalogue.h"
#include "profiles/custom_audio.h"
#include "unit/profiles/engine_factory.h"
#include "unit/profiles/profile_session.h"

namespace profiles {
namespace {

using platform::FourCC;
using testing::ElementsAre;

TEST(CodecCatalogue, UnknownNamesFallBackSilently) {
    ProfileSession session;
    session.MakeAudience();
    const struct {
        const char* why;
        const char* audio;
        std::int32_t audio_index;
        const char* video;
        std::int32_t video_index;
    } kCases[] = {
        {"every name its own codec", "WMA9LSL", 2, "WMS9", 3},
        {"value 0 is a codec too", "PCM", 4, "UNCOMP", 5},
        {"no name at all", "", 0, "", 2},
        {"names are compared as they stand", "pcm", 0, "wmv7", 2},
        {"a FourCC is no short name", "0x0162", 0, "WMV3", 2},
    };
    for (const auto& row : kCases) {
        EXPECT_EQ(GetAudioCodecIndex(session.profile(), row.audio), row.audio_index) << row.why;
        EXPECT_EQ(GetVideoCodecIndex(session.profile(), row.video), row.video_index) << row.why;
    }
}

TEST(CodecListings, CodecsOutsideTheCatalogueTakeNoNumber) {
    test_support::FakeFactory factory;
    factory.on_profile = [](test_support::FakeProfile& profile) {
        profile.video_codecs = {{FourCC("WMV3"), "Video 9", {}},
                                {FourCC("XVID"), "Another", {}},
                                {0, "Full frames", {}}};
    };
    test_support::RecordingPane pane;
    ListVideoCodecs(factory, pane);
    EXPECT_THAT(
        pane.Take(),
        ElementsAre("\r\nVideo Codecs: ",                                                        //
                    "CBR Mode :", "\t[1] WMV9 : Video 9", "\t[2] UNCOMP : Full frames", "\r\n",  //
                    "Peak Bit Rate-Based VBR Audio Mode :", "\t[1] WMV9 : Video 9",
                    "\t[2] UNCOMP : Full frames", "\r\n",  //
                    "Quality-Based VBR Audio Mode :", "\t[1] WMV9 : Video 9",
                    "\t[2] UNCOMP : Full frames", "\r\n",  //
                    "Bit Rate-Based VBR Audio Mode :", "\t[1] WMV9 : Video 9",
                    "\t[2] UNCOMP : Full frames", "\r\n"));
    EXPECT_THAT(factory.log->lines, ElementsAre("VBRMode(video, 0)=1", "VBRMode(video, 0)=2",
                                                "VBRMode(video, 0)=3", "VBRMode(video, 0)=4"));

    ListAudioCodecs(factory, pane);
    EXPECT_EQ(pane.lines.front(), "\r\nAudio Codecs: ");
    EXPECT_EQ(pane.lines[6], "\t[5] PCM : PCM");
}

TEST(CodecListings, FormatsAreListedAsArguments) {
    test_support::FakeFactory factory;
    factory.on_profile = [](test_support::FakeProfile& profile) {
        profile.audio_codecs = {
            {0x999, "Stranger", {{1, {{8500, 32000, 1, 16}}}}},
            {0x162, "Pro", {{1, {{128500, 44100, 2, 24}}}}},
            {0x888, "Follower", {{1, {{9500, 11025, 2, 20}}}}},
            {0x161, "Std", {{1, {{20008, 22050, 2, 16}}}, {3, {{75, 88200, 2, 16}}}}}};
    };
    test_support::RecordingPane pane;
    ListAudioFormats(factory, pane);
    const Lines lines = pane.Take();

    const std::string rule = "\t\t" + std::string(84, '-');
    const std::string plain =
        "\t\tArgument                Bitrate         Sampling rate       Channel";
    const std::string with_bits = plain + "   BitsPerSample";
    EXPECT_THAT(
        Lines(lines.begin(), lines.begin() + 27),
        ElementsAre("\r\nAudio Codecs: ", "CBR Mode :",
                    // No name yet; 8500 goes to the even neighbour.
                    "\tStranger:", "\r\n", plain, rule,
                    "\t\t8_32_1                  8               32                  1", "",
                    "\tWMA9PRO : Pro (WMA9PRO):", "\r\n", with_bits, rule,
                    "\t\t128_44_2_24             128             44                  2         24",
                    "",
                    // Unknown, so under the name and with the columns of the one before.
                    "\tWMA9PRO : Follower (WMA9PRO):", "\r\n", with_bits, rule,
                    "\t\t10_11_2_20              10              11                  2         20",
                    "",  //
                    "\tWMA9STD : Std (WMA9STD):", "\r\n", plain, rule,
                    "\t\t20_22_2                 20              22                  2", "",
                    // After the mode.
                    "\r\n"));
    // The name is carried into the next mode too.
    EXPECT_EQ(lines[27], "Peak Bit Rate-Based VBR Audio Mode :");
    EXPECT_EQ(lines[28], "\tWMA9STD : Stranger (WMA9STD):");
    EXPECT_THAT(lines,
                testing::IsSupersetOf(
                    {"\t\tArgument                Quality         Sampling rate       Channel",
                     "\t\tQ75_88_2                Q75             88                  2"}));
}

struct ListedArgument {
    platform::VbrMode mode;
    std::string codec;
    std::string argument;
};

std::vector<ListedArgument> ListedArguments() {
    EngineFactory factory;
    test_support::RecordingPane pane;
    ListAudioFormats(factory, pane);
    std::vector<ListedArgument> listed;
    ListedArgument row{};
    for (const std::string& line : pane.lines) {
        for (const auto mode : {platform::VbrMode::Constant, platform::VbrMode::Peak,
                                platform::VbrMode::Quality, platform::VbrMode::BitRate})
            if (line == ModeCaption(mode)) row.mode = mode;
        if (const std::size_t colon = line.find(" : "); colon != std::string::npos)
            row.codec = line.substr(1, colon - 1);
        if (!line.starts_with("\t\t") || line.find('_') == std::string::npos) continue;
        row.argument = line.substr(2, line.find(' ') - 2);
        listed.push_back(row);
    }
    return listed;
}

TEST(CodecListings, EveryListedArgumentIsTakenAndMeansAListedFormat) {
    const std::vector<ListedArgument> listed = ListedArguments();
    EXPECT_GT(listed.size(), 200U);
    for (const ListedArgument& row : listed) {
        SCOPED_TRACE(row.codec + " " + row.argument);
        ProfileSession session;
        const auto profile = engine::MakeProfile(nullptr);
        const auto audience = profile->AddAudience(1);
        profile->SetVBRMode(platform::SourceType::Audio, 0, row.mode);
        session.state.g_objProfile = profile;
        session.settings.a_codec = row.codec;
        session.settings.a_setting = row.argument;
        ASSERT_TRUE(
            SetupCustomAudioProfile(session.state, session.settings, session.pane, *audience))
            << testing::PrintToString(session.pane.lines);
        const int codec = audience->AudioCodec(0);
        int same = 0;
        for (int i = 0; i < profile->AudioFormatCount(codec); ++i) {
            std::int32_t hertz = 0;
            std::int32_t channels = 0;
            std::int32_t bits = 0;
            const std::int32_t value = profile->EnumAudioFormat(codec, i, hertz, channels, bits);
            same += value == audience->AudioBitrate(0) && hertz == audience->AudioSamplingRate(0) &&
                    channels == audience->AudioChannels(0) &&
                    bits == audience->AudioBitsPerSample(0);
        }
        EXPECT_EQ(same, 1);
    }
}

TEST(CustomAudio, TheReportNamesTheCodecInTheModeThatASettingChooses) {
    ProfileSession session;
    const auto profile = engine::MakeProfile(nullptr);
    const auto audience = profile->AddAudience(1);
    session.state.g_objProfile = profile;
    session.settings.a_codec = "WMA9LSL";
    session.settings.a_setting = "Q100_44_2_16";
    EXPECT_TRUE(SetupCustomAudioProfile(session.state, session.settings, session.pane, *audience));
    EXPECT_EQ(session.state.AudioCodecName, "Windows Media Audio 9 Lossless");
}

}  // namespace
}  // namespace profiles
