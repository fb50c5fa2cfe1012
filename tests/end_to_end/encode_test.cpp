// Whole encodings by the console program, looked at with independent tools.
#include <cmath>

#include "end_to_end/console_run.h"
#include "support/asf_reader.h"
#include "support/row_name.h"

namespace test_support {
namespace {

constexpr int kSeconds = 4;

class Encode : public testing::Test {
  protected:
    Encode() { MakeClip(clip_, kSeconds); }

    const TempFolder folder_;
    const std::string clip_ = folder_ / "clip.avi";
};

/// What the report says of a file against what ffprobe counts in it.
void ExpectReportAgrees(const std::string& pane, const std::string& file) {
    int stream = 0;
    if (pane.find("\nAudio :") != std::string::npos) {
        EXPECT_EQ(ReportFigure(pane, "Total bytes:", stream++), ProbeBytes(file, "a:0"));
    }
    if (pane.find("\nVideo :") != std::string::npos) {
        EXPECT_EQ(ReportFigure(pane, "Total bytes:", stream), ProbeBytes(file, "v:0"));
        EXPECT_EQ(ReportFigure(pane, "Total coded frames:"),
                  ProbeNumber(file, "v:0", "nb_read_packets"));
    }
    EXPECT_EQ(ReportFigure(pane, "File size:"),
              static_cast<double>(std::filesystem::file_size(file)));
    EXPECT_NEAR(ReportFigure(pane, "File duration:"), ProbeNumber(file, "", "duration"), 0.51);
}

struct ProfileCase {
    const char* why;    // its code
    int width, height;  // 0 = no video
    int channels;       // 0 = no audio
    int sampling_rate;
};

// clang-format off
const ProfileCase kProfiles[] = {
    // code      size      channels, Hz
    {"av20",     160, 120, 1, 8000},
    {"av32",     176, 144, 1, 11025},
    {"av100",    320, 240, 1, 16000},
    {"av225",    320, 240, 2, 32000},
    {"av350",    320, 240, 2, 32000},
    {"av450",    320, 240, 2, 44100},
    {"av700",    320, 240, 2, 44100},
    {"av1400",   320, 240, 2, 44100},
    {"av350pal", 384, 288, 2, 32000},
    {"av700pal", 384, 288, 2, 44100},
    {"av100_2p", 320, 240, 1, 16000},
    {"av350_2p", 320, 240, 2, 32000},
    {"av600vbr", 320, 240, 2, 44100},
    {"avq97vbr", 320, 240, 2, 44100},
    {"a20_1",    0,   0,   1, 22050},
    {"a20_2",    0,   0,   2, 22050},
    {"a32",      0,   0,   2, 32000},
    {"a48",      0,   0,   2, 32000},
    {"a64",      0,   0,   2, 44100},
    {"a96",      0,   0,   2, 44100},
    {"a128",     0,   0,   2, 44100},
    {"v20",      176, 144, 0, 0},
    {"v32",      240, 176, 0, 0},
};
// clang-format on

// Every one that is not a screen's.
class PredefinedProfiles : public testing::TestWithParam<ProfileCase> {};
INSTANTIATE_TEST_SUITE_P(Rows, PredefinedProfiles, testing::ValuesIn(kProfiles), NameOfRow());

TEST_P(PredefinedProfiles, EncodeWhatTheirCodesSay) {
    const ProfileCase& each = GetParam();
    constexpr int kShort = 2;  // seconds
    const TempFolder folder;
    const std::string clip = folder / "clip.avi";
    MakeClip(clip, kShort);
    const std::string file = folder / (each.width > 0 ? "out.wmv" : "out.wma");
    const CommandResult result =
        Console({"-input", clip, "-output", file, "-profile", each.why, "-v_performance", "0"});
    ASSERT_EQ(result.status, 0) << result.out << result.err;
    EXPECT_EQ(DecodeMessages(file), "");
    EXPECT_NEAR(ProbeNumber(file, "", "duration"), kShort, 0.1);
    if (each.width > 0) {
        EXPECT_EQ(ProbeNumber(file, "v:0", "width"), each.width);
        EXPECT_EQ(ProbeNumber(file, "v:0", "height"), each.height);
        // A profile's rate rises to the source's; what the bit rate cannot hold is dropped.
        EXPECT_EQ(ProbeNumber(file, "v:0", "nb_read_packets") +
                      ReportFigure(result.out, "Dropped frame count:"),
                  kShort * 30);
    } else {
        EXPECT_TRUE(Probe(file, "v:0").empty());
    }
    if (each.channels > 0) {
        EXPECT_EQ(ProbeNumber(file, "a:0", "channels"), each.channels);
        EXPECT_EQ(ProbeNumber(file, "a:0", "sample_rate"), each.sampling_rate);
    } else {
        EXPECT_TRUE(Probe(file, "a:0").empty());
    }
    ExpectReportAgrees(result.out, file);
}

TEST_F(Encode, CustomProfileInEveryMode) {
    struct Case {
        const char* a_mode;
        const char* a_setting;
        const char* v_mode;
        bool expected_audio, expected_video;  // the report's "Expected bit rate:" lines
    };
    const Case kCases[] = {
        // a_mode a_setting   v_mode
        {"0", "64_44_2", "2", true, false},  {"1", "96_44_2", "1", true, true},
        {"2", "Q75_44_2", "0", false, true}, {"3", "64_44_2", "3", true, true},
        {"4", "128_44_2", "4", true, true},
    };
    for (const Case& each : kCases) {
        SCOPED_TRACE(each.v_mode);
        const std::string file = folder_ / (std::string("mode") + each.v_mode + ".wmv");
        const CommandResult result =
            Console({"-input", clip_, "-output", file, "-a_mode", each.a_mode, "-a_setting",
                     each.a_setting, "-v_mode", each.v_mode, "-v_codec", "WMV8", "-v_bitrate",
                     "400000", "-v_width", "240", "-v_height", "180"});
        ASSERT_EQ(result.status, 0) << result.out << result.err;
        EXPECT_EQ(DecodeMessages(file), "");
        EXPECT_EQ(ProbeNumber(file, "v:0", "width"), 240);
        EXPECT_NEAR(ProbeNumber(file, "", "duration"), kSeconds, 0.1);
        const std::size_t video = result.out.find("\nVideo :");
        const std::size_t audio_rate = result.out.find("\tExpected bit rate: ");
        const std::size_t video_rate = result.out.find("\tExpected bit rate: ", video);
        EXPECT_EQ(audio_rate < video, each.expected_audio);
        EXPECT_EQ(video_rate != std::string::npos, each.expected_video);
        ExpectReportAgrees(result.out, file);
    }
}

TEST(EncodeLossless, GivesEverySampleBack) {
    struct Case {
        const char* setting;
        const char* source;  // ffmpeg's
        const char* samples;
    };
    const Case kCases[] = {
        // setting       source                                                  samples
        {"Q100_44_2_16", "aevalsrc=0.8*sin(t*t*3000)|0.3*random(1):s=44100:d=3", "pcm_s16le"},
        {"Q100_48_2_24", "aevalsrc=0.9*sin(t*t*900)|0.2*sin(440*t):s=48000:d=2", "pcm_s24le"},
        {"Q100_96_6_24", "anoisesrc=r=96000:c=pink:d=1,aformat=cl=5.1", "pcm_s24le"},
    };
    for (const Case& each : kCases) {
        SCOPED_TRACE(each.setting);
        const TempFolder folder;
        const std::string samples = std::string(" -c:a ") + each.samples;
        const std::string clip =
            Ffmpeg(std::string("-f lavfi -i '") + each.source + "'" + samples, folder / "clip.wav");
        const std::string file = folder / "out.wma";
        const CommandResult result =
            Console({"-input", clip, "-output", file, "-a_codec", "WMA9LSL", "-a_mode", "2",
                     "-a_setting", each.setting});
        ASSERT_EQ(result.status, 0) << result.out << result.err;
        EXPECT_EQ(DecodeMessages(file), "");
        EXPECT_EQ(Probe(file, "a:0")["codec_name"], "wmalossless");
        const auto sum = [&](const std::string& of) {
            return FileText(Ffmpeg("-i '" + of + "'" + samples + " -f md5", folder / "sum"));
        };
        EXPECT_EQ(sum(file), sum(clip));
        EXPECT_NEAR(ProbeNumber(file, "", "duration"), ProbeNumber(clip, "", "duration"), 0.002);
        EXPECT_LT(ProbeBytes(file, "a:0"), ProbeBytes(clip, "a:0"));
        ExpectReportAgrees(result.out, file);
    }
}

TEST_F(Encode, DisplayInformationAndTheDownmixReachTheFile) {
    const std::string file = folder_ / "info.wmv";
    const CommandResult result =
        Console({"-input",          clip_,       "-output",    file,
                 "-profile",        "av225",     "-title",     "Ein Würfel",
                 "-author",         "A",         "-copyright", "C",
                 "-description",    "two words", "-rating",    "R",
                 "-a_folddown6to2", "10",        "3",          "3"});
    ASSERT_EQ(result.status, 0) << result.out;
    const asf_reader::Header header = asf_reader::ReadFile(file).header;
    EXPECT_EQ(header.content, (std::vector<std::string>{"Ein Würfel", "A", "C", "two words", "R"}));
    const std::pair<const char*, std::int32_t> kMixes[] = {
        {"SurroundMix", -10}, {"CenterMix", -3}, {"LFEMix", -3}};
    ASSERT_EQ(header.attributes.size(), std::size(kMixes));
    for (std::size_t i = 0; i < std::size(kMixes); ++i) {
        EXPECT_EQ(header.attributes[i].name, kMixes[i].first);
        EXPECT_EQ(static_cast<std::int32_t>(std::get<std::uint32_t>(header.attributes[i].value)),
                  kMixes[i].second);
    }
}

}  // namespace
}  // namespace test_support
