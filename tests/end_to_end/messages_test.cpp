// What a user of the console reads, with the exit status: a line from each room of the program,
// whose own tests have the others.
#include <algorithm>
#include <fstream>

#include "end_to_end/console_run.h"

namespace test_support {
namespace {

using Words = std::vector<std::string>;

Words operator+(Words first, const Words& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

constexpr int kDone = 0;
constexpr int kRefused = 1;
constexpr int kFailed = 2;

/// How often a line of the text begins so. A `line` that ends in a line end is a whole one.
int CountLines(const std::string& text, const std::string& line) {
    return CountOf("\n" + text, "\n" + line);
}

void ExpectLines(const std::string& text, const std::vector<std::string>& lines) {
    for (const std::string& line : lines) EXPECT_GE(CountLines(text, line), 1) << line;
}

/// Two seconds of video and audio.
std::string MakeSmallClip(const TempFolder& folder) {
    MakeClip(folder / "clip.avi", 2, "64x48", 10);
    return folder / "clip.avi";
}

TEST(Messages, EachRefusedCommandEndsWithItsStatusAndItsLine) {
    const TempFolder folder;
    const std::string clip = MakeSmallClip(folder);
    const std::string out = folder / "out.wmv";
    std::ofstream(folder / "text.avi") << "no media\n";
    std::ofstream(folder / "blank.weu") << "   \n";
    std::ofstream(folder / "round.weu") << "-config " << folder / "round.weu"
                                        << "\n";

    struct Case {
        const char* why;
        Words words;
        std::string line;
        int status = kRefused;
    };
    const Words encode = {"-input", clip, "-output", out};
    // clang-format off
    const Case kCases[] = {
        // why, words, line
        {"empty configuration file", {"-config", folder / "blank.weu"}, "Configuration file " + folder / "blank.weu" + " is empty\n"},
        {"configuration file that names itself", {"-config", folder / "round.weu"},
         "Configuration file " + folder / "round.weu" + " is nested more than 16 deep\n"},

        // input
        {"no such file", {"-input", folder / "no.avi", "-output", out}, "Error: 0x80070002 - "},
        {"no media file", {"-input", folder / "text.avi", "-output", out}, "Error: 0x8007000D - "},
        {"session file", {"-wme", folder / "no.wme", "-output", out}, "Loading the session (.wme) file failed: " + folder / "no.wme" + "\n"},
        {"audio device number", {"-adevice", "77", "-duration", "5"}, "Error: Invalid audio device number specified\n"},
        {"video device number", {"-vdevice", "77", "-duration", "5"}, "Error: Invalid video device number specified\n"},
        {"capture without an end", {"-adevice", "-input", clip, "-output", out}, "Duration must be specified when capturing from devices.\n"},

        // profile
        {"profile file", encode + Words{"-loadprofile", folder / "no.prx"}, "Invalid profile: 0x80070002 "},
        {"audio rate", encode + Words{"-a_setting", "50_44_2"}, "Invalid audio bit rate 50000\n"},
        {"uncompressed video only", encode + Words{"-v_codec", "UNCOMP"}, "Audio codec must be uncompressed when using uncompressed video codec\n"},

        // run
        {"output that is the input", {"-input", clip, "-output", clip, "-silent"},
         "Prepare to encode failed with error -2147024809 The output " + clip},
        {"both marks past the end",
         encode + Words{"-profile", "av100", "-time", "5000", "9000"},
         "Start encoder failed with error -2147024809 The start mark 5000 ms ", kFailed},
        {"viewer of another system", {"-help?"}, "Error: 0x80070002 - "},
    };
    // clang-format on
    for (const Case& each : kCases) {
        SCOPED_TRACE(each.why);
        const CommandResult result = Console(each.words);
        EXPECT_EQ(result.status, each.status) << result.out << result.err;
        // One failure, one line.
        EXPECT_EQ(CountLines(result.out, each.line), 1) << result.out << result.err;
        EXPECT_EQ(std::ranges::count(result.out, '\n'), 1) << result.out;
        EXPECT_EQ(result.err.rfind("Initializing Codecs...\n", 0), 0U) << result.err;
        EXPECT_FALSE(std::filesystem::exists(out));
    }
}

TEST(Messages, ListingsComeFromTheEncoder) {
    const std::pair<const char*, const char*> rows[] = {
        {"-devices", "audio device:\n"},
        {"-a_codecs", "\t[5] PCM : PCM\n"},
        {"-v_codecs", "\t[6] UNCOMP : Full frames (uncompressed)\n"},
        {"-a_formats",
         "\t\tQ100_44_2_16            Q100            44                  2         16\n"},
    };
    for (const auto& [word, line] : rows) {
        const CommandResult result = Console({word});
        EXPECT_EQ(result.status, kDone) << result.err;
        EXPECT_GE(CountLines(result.out, line), 1) << word;
        EXPECT_EQ(result.err, "Initializing Codecs...\n");
    }
}

TEST(Messages, TheStatusSaysItsStepsAndPasses) {
    const TempFolder folder;
    const std::string clip = MakeSmallClip(folder);
    const std::pair<const char*, const char*> rows[] = {{"av100", "1 \\ 1"},
                                                        {"av100_2p", "1 \\ 2"}};
    for (const auto& [profile, passes] : rows) {
        SCOPED_TRACE(profile);
        const CommandResult result =
            Console({"-input", clip, "-output", folder / "out", "-profile", profile});
        ASSERT_EQ(result.status, kDone) << result.out << result.err;
        EXPECT_EQ(CountLines(result.out, "\tCodec: \t\t\tWindows Media "), 2);
        EXPECT_EQ(CountLines(result.out, "\tTotal coded frames: \t20\n"), 1);
        ExpectLines(result.err, {"Initializing Codecs...\n",
                                 std::string("  Running... Pass:  ") + passes + "\n", "  Done.\n"});
    }
}

TEST(Messages, AFolderWalkNamesWhatItReadsAndPassesOver) {
    const TempFolder folder;
    std::filesystem::create_directories(folder / "in/below");
    const std::string clip = MakeSmallClip(folder);
    std::filesystem::copy(clip, folder / "in/one.AVI");
    std::filesystem::copy(clip, folder / "in/below/one.avi");
    std::filesystem::copy(clip, folder / "in/below/one.Avi");
    std::ofstream(folder / "in/notes.txt") << "no media\n";
    std::ofstream(folder / "in/plain") << "no media\n";
    std::ofstream(folder / "in/text.mpg") << "no media\n";

    const CommandResult result = Console({"-input", folder / "in", "-output", folder / "out",
                                          "-outputstring", "_x", "-profile", "av100", "-silent"});
    EXPECT_EQ(result.status, kFailed) << result.out << result.err;
    const std::string heading = "============== Encoding Files in Folder ============== ";
    const std::string file = "============== Input ";
    ExpectLines(result.out, {heading + folder / "in" + "\n", heading + folder / "in/below" + "\n",
                             file + folder / "in/one.AVI " + folder / "out/one_x\n",
                             file + folder / "in/below/one.avi " + folder / "out/below/one_x\n",
                             "Skipping: notes.txt\n", "Skipping: plain\n", "Skipping: one."});
    EXPECT_EQ(CountLines(result.out, "Error: 0x8007000D - "), 1) << result.out;
    EXPECT_EQ(CountLines(result.out, "======== Encoding Completed ========\n"), 2);
    EXPECT_EQ(CountLines(result.out, "Overall:"), 0);
}

}  // namespace
}  // namespace test_support
