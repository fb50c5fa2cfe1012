// What the console program says, and how it ends, when a command only lists, is refused or fails.
#include <fstream>

#include "end_to_end/console_run.h"

namespace test_support {
namespace {

TEST(Refusal, EachCommandEndsWithItsStatusAndItsLine) {
    const TempFolder folder;
    const std::string clip = folder / "clip.avi";
    MakeClip(clip, 2);
    const std::string out = folder / "out.wmv";
    std::ofstream(folder / "text.avi") << "no media\n";
    std::ofstream(folder / "blank.weu") << "   \n";

    struct Case {
        const char* why;
        std::vector<std::string> words;
        int status;
        std::string line;  // stands in the pane
    };
    const Case kCases[] = {
        {"listing", {"-v_codecs"}, 0, "\t[1] WMV7 : Windows Media Video 7\n"},
        {"listing", {"-devices"}, 0, "audio device:\n"},
        {"help", {"-help"}, 0, "Usage for I/O and statistics.\n"},
        {"file information", {"-input", clip}, 0, "AVI"},
        {"unknown word", {"-nothing", "x"}, 1, "Invalid parameter: -nothing\n"},
        {"empty word", {"-silent", ""}, 1, "Invalid parameter: \n"},
        {"missing value", {"-v_width", "-silent"}, 1, "Invalid format for parameter -v_width\n"},
        {"no number", {"-v_width", "x"}, 1, "Expect integer value for parameter -v_width\n"},
        {"value past the end", {"-silent", "-output"}, 1, "Error: 0x8002000B - "},
        {"audio codec", {"-a_codec", "x"}, 1, "Please enter correct audio codec index only\n"},
        {"profile code", {"-input", clip, "-profile", "av1"}, 1, "No predefined profile found.\n"},
        {"audio mode", {"-input", clip, "-a_mode", "7"}, 1, "Invalid -a_mode <mode_number>\n"},
        {"audio rate",
         {"-input", clip, "-a_setting", "50_44_2"},
         1,
         "Invalid audio bit rate 50000\n"},
        {"uncompressed picture only",
         {"-input", clip, "-v_codec", "UNCOMP"},
         1,
         "Audio codec must be uncompressed when using uncompressed video codec\n"},
        {"no such file", {"-input", folder / "no.avi", "-output", out}, 1, "Error: 0x80070002 - "},
        {"no media file", {"-input", folder / "text.avi", "-output", out}, 1, "Error: 0x8007000D"},
        {"device number",
         {"-adevice", "77", "-duration", "5"},
         1,
         "Error: Invalid audio device number specified\n"},
        {"empty configuration file", {"-config", folder / "blank.weu"}, 1, "blank.weu is empty\n"},
        {"folder without an output",
         {"-input", folder.path(), "-silent"},
         1,
         "Error: No output directory specified\n"},
        {"output that is the input",
         {"-input", clip, "-output", clip, "-silent"},
         1,
         "Prepare to encode failed with error "},
        {"nowhere to write",
         {"-input", clip, "-silent"},
         1,
         "Prepare to encode failed with error "},
    };
    for (const Case& each : kCases) {
        SCOPED_TRACE(each.why);
        const CommandResult result = Console(each.words);
        EXPECT_EQ(result.status, each.status) << result.out << result.err;
        EXPECT_NE(result.out.find(each.line), std::string::npos) << result.out << result.err;
        EXPECT_FALSE(std::filesystem::exists(out));
    }
}

TEST(Refusal, AnEndMarkPastTheEndEncodesToTheEnd) {
    const TempFolder folder;
    MakeClip(folder / "clip.avi", 2);
    const CommandResult result =
        Console({"-input", folder / "clip.avi", "-output", folder / "out.wmv", "-profile", "av225",
                 "-time", "0", "9000"});
    EXPECT_EQ(result.status, 0) << result.out;
    EXPECT_NEAR(ProbeNumber(folder / "out.wmv", "", "duration"), 2.0, 0.1);
}

TEST(Refusal, AConfigurationFileCarriesACommand) {
    const TempFolder folder;
    MakeClip(folder / "clip.avi", 2);
    const CommandResult saved =
        Console({"-input", folder / "clip.avi", "-output", folder / "first.wmv", "-profile",
                 "av100", "-s_config", folder / "job"});
    ASSERT_EQ(saved.status, 0) << saved.out;
    const CommandResult read = Console(
        {"-config", folder / "job.weu", "-output", folder / "second.wmv", "-profile", "av225"});
    ASSERT_EQ(read.status, 0) << read.out;
    EXPECT_EQ(ProbeNumber(folder / "second.wmv", "a:0", "channels"), 2);
}

}  // namespace
}  // namespace test_support
