// The console's ways to be driven by programs: commands from the input, explanations, JSON.
#include <sys/stat.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "end_to_end/console_run.h"

namespace test_support {
namespace {

using Json = nlohmann::json;
using testing::HasSubstr;
using testing::Not;

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

/// Every line as an object; the parser takes nothing but whole and valid ones.
std::vector<Json> Objects(const std::string& out) {
    std::vector<Json> objects;
    EXPECT_TRUE(out.empty() || out.back() == '\n') << "a line without its end";
    for (const std::string& line : Lines(out)) {
        Json object = Json::parse(line, nullptr, false);
        EXPECT_TRUE(object.is_object()) << line;
        objects.push_back(std::move(object));
    }
    return objects;
}

/// Runs the console with words (without blanks) and lines as its input.
CommandResult Feed(const TempFolder& folder, const std::string& words, const std::string& lines) {
    std::ofstream(folder / "lines") << lines;
    return RunCommand(
        {"sh", "-c", std::string(TESSIVO_CONSOLE) + " " + words + " < " + (folder / "lines")});
}

class ConsoleModes : public testing::Test {
  protected:
    ConsoleModes() { MakeClip(clip, 1); }

    const TempFolder folder;
    const std::string clip = folder / "clip.avi";
};

TEST_F(ConsoleModes, LinesOfTheInputCarryOverAndTheWorstStatusCounts) {
    const std::string first = "-input " + clip + " -profile av100 -output ";
    const CommandResult result =
        Feed(folder, "-",
             "# two files and a mistake\r\n\n" + first + (folder / "a.wmv") +
                 "\r\n-v_width x\n-output " + (folder / "b.wmv") + "\nquit\n-output " +
                 (folder / "c.wmv") + "\n");
    EXPECT_EQ(result.status, 1) << result.out;
    EXPECT_EQ(result.err.find("> "), std::string::npos) << "a prompt";
    EXPECT_TRUE(std::filesystem::exists(folder / "a.wmv"));
    EXPECT_TRUE(std::filesystem::exists(folder / "b.wmv"));
    EXPECT_FALSE(std::filesystem::exists(folder / "c.wmv"));
    EXPECT_EQ(ProbeNumber(folder / "b.wmv", "v:0", "width"), 320);
}

TEST_F(ConsoleModes, AnExplanationSaysAllAndWritesNothing) {
    const CommandResult result = Console(
        {"--explain", "-input", clip, "-output", folder / "new/out.wmv", "-profile", "av100",
         "-time", "100", "end", "-title", "A\nday", "-s_config", folder / "cfg/job"});
    EXPECT_EQ(result.status, 0) << result.out;
    for (const std::string& line :
         {std::string("session.ContentType = audio and video\n"), "video.Input = " + clip + "\n",
          std::string("video.MarkIn = 100\n"), std::string("video.MarkOut = 0\n"),
          std::string("profile.VideoVBRMode = constant\n"),
          std::string("audience.VideoWidth = 320\n"), std::string("audience.AudioBitrate = "),
          std::string("display.Title = A\\x0Aday\n"), std::string("encoder.AutoStop = true\n"),
          "writes.Folder = " + (folder / "new") + "\n",
          "writes.ConfigurationFile = " + (folder / "cfg/job.weu") + "\n",
          "writes.OutputFile = " + (folder / "new/out.wmv") + "\n"})
        EXPECT_THAT(result.out, HasSubstr(line));
    EXPECT_THAT(result.out, Not(HasSubstr("carried over")));
    const std::filesystem::directory_iterator files(folder.path());
    EXPECT_EQ(std::distance(begin(files), end(files)), 1) << "more than the clip";
}

TEST_F(ConsoleModes, AnExplanationMarksWhatEarlierCommandsLeftAndLeavesNothingItself) {
    const CommandResult result =
        Feed(folder, "-",
             "-input " + clip + " -profile av100 -silent -v_width 160 -output " +
                 (folder / "a.wmv") + "\n--explain -v_width 80 -author me -output " +
                 (folder / "b.wmv") + "\n--explain -output " + (folder / "b.wmv") + "\n");
    EXPECT_EQ(result.status, 0) << result.out;
    EXPECT_THAT(result.out, HasSubstr("video.Input = " + clip + " (carried over)\n"));
    EXPECT_THAT(result.out, HasSubstr("audience.VideoHeight = 240 (carried over)\n"));
    EXPECT_THAT(result.out, HasSubstr("audience.VideoWidth = 80\n"));
    EXPECT_THAT(result.out, HasSubstr("display.Author = me\n"));
    // The second explanation starts from the same settings as the first.
    EXPECT_THAT(result.out, HasSubstr("audience.VideoWidth = 160 (carried over)\n"));
    EXPECT_THAT(result.out, Not(HasSubstr("display.Author = me (carried over)")));
}

TEST_F(ConsoleModes, AModeThatTheProfileKeepsIsCarriedOver) {
    const CommandResult result =
        Feed(folder, "-",
             "-input " + clip + " -profile avq97vbr -silent -output " + (folder / "a.wmv") +
                 "\n--explain -profile av100 -output " + (folder / "b.wmv") +
                 "\n--explain -profile avq97vbr -output " + (folder / "b.wmv") + "\n");
    EXPECT_EQ(result.status, 0) << result.out;
    EXPECT_THAT(result.out, HasSubstr("profile.VideoVBRMode = quality (carried over)\n"));
    EXPECT_THAT(result.out, HasSubstr("profile.VideoVBRMode = quality\n"));
    EXPECT_THAT(result.out, HasSubstr("profile.InterlaceMode = false\n"));
}

TEST_F(ConsoleModes, AnExplanationRefusesWhatTheRunWould) {
    const std::vector<std::vector<std::string>> commands = {
        {"-input", clip, "-profile", "av100"},
        {"-input", clip, "-output", clip, "-profile", "av100"},
        {"-input", clip, "-output", folder / "a.wmv", "-v_clip", "900", "0", "0", "0"},
        {"-input", clip, "-output", folder / "a.wmv", "-broadcast", "70000"},
        {"-input", clip, "-output", folder / "a.wmv", "-saveprofile", folder / "no/p.prx"},
    };
    for (std::vector<std::string> words : commands) {
        const CommandResult run = Console(words);
        words.insert(words.begin(), "--explain");
        const CommandResult explained = Console(words);
        EXPECT_EQ(run.status, 1) << run.out;
        EXPECT_EQ(explained.status, 1) << explained.out;
        EXPECT_EQ(explained.out, run.out);
    }
}

TEST_F(ConsoleModes, AFolderIsExplainedFileByFile) {
    std::filesystem::create_directories(folder / "in/sub");
    std::filesystem::copy_file(clip, folder / "in/a.avi");
    std::filesystem::copy_file(folder / "in/a.avi", folder / "in/sub/b.avi");
    const CommandResult result = Console(
        {"--explain", "-input", folder / "in", "-output", folder / "out", "-profile", "av100"});
    EXPECT_EQ(result.status, 0) << result.out;
    EXPECT_THAT(result.out, HasSubstr("writes.OutputFile = " + (folder / "out/a.wmv") + "\n"));
    EXPECT_THAT(result.out, HasSubstr("writes.OutputFile = " + (folder / "out/sub/b.wmv") + "\n"));
    EXPECT_FALSE(std::filesystem::exists(folder / "out"));
}

TEST_F(ConsoleModes, JsonEndsInAWholeReportHoweverACommandEnds) {
    std::filesystem::create_directories(folder / "in");
    std::filesystem::copy_file(clip, folder / "in/good.avi");
    std::ofstream(folder / "in/bad.avi") << "no media\n";
    struct Case {
        const char* why;
        std::vector<std::string> words;
        const char* state;
        int status;
        std::uint32_t number;  // of the error; 0 = none
    };
    // clang-format off
    const Case kCases[] = {
        // why, words, state, status, error number
        {"encoded", {"-input", clip, "-profile", "av100", "-output", folder / "a.wmv"}, "completed", 0, 0},
        {"listed", {"-devices"}, "shown", 0, 0},
        {"explained", {"--explain", "-input", clip, "-output", folder / "e.wmv", "-profile", "av100"}, "shown", 0, 0},
        {"unknown word", {"-n\xC3\xBC\"\\\x01\r\n\xFF(", "x"}, "refused", 1, 0},
        {"value past the end", {"-silent", "-output"}, "refused", 1, 0x8002000B},
        {"no such file", {"-input", folder / "no.avi", "-silent"}, "refused", 1, 0x80070002},
        {"no target", {"-input", clip, "-silent"}, "refused", 1, 0x80070057},
        {"no command", {}, "refused", 1, 0},
        {"whole, so nothing to repair", {"--repair", folder / "a.wmv"}, "completed", 0, 0},
        {"nothing to repair from", {"--repair", clip}, "refused", 1, 0x8007000D},
        {"repair of no file", {"--repair"}, "refused", 1, 0x80070057},
        {"a folder's bad file", {"-input", folder / "in", "-profile", "av100", "-output", folder / "out"}, "failed", 2, 0},
    };
    // clang-format on
    for (const Case& each : kCases) {
        SCOPED_TRACE(each.why);
        std::vector<std::string> words = each.words;
        words.insert(words.begin(), "--json");
        const CommandResult result = Console(words);
        EXPECT_EQ(result.status, each.status) << result.err;
        const std::vector<Json> objects = Objects(result.out);
        ASSERT_FALSE(objects.empty());
        const Json& report = objects.back();
        EXPECT_EQ(report["type"], "report");
        EXPECT_EQ(report["state"], each.state);
        EXPECT_EQ(report["exit_status"], each.status);
        EXPECT_EQ(report["error"].is_null(), each.status == 0) << report;
        if (each.number != 0) {
            EXPECT_EQ(report["error"]["number"], each.number);
        }
    }
}

TEST_F(ConsoleModes, TheReportHasTheFilesFigures) {
    const CommandResult result =
        Console({"--json", "-input", clip, "-profile", "av100", "-output", folder / "a.wmv"});
    const Json report = Objects(result.out).back();
    EXPECT_EQ(report["output"], folder / "a.wmv");
    EXPECT_EQ(report["file_size"], std::filesystem::file_size(folder / "a.wmv"));
    const Json& video = report["video"];
    EXPECT_EQ(video["frames"], ProbeNumber(folder / "a.wmv", "v:0", "nb_read_packets"));
    EXPECT_EQ(video["frames"].get<int>() + video["dropped_frames"].get<int>(), 30);
    EXPECT_NEAR(report["file_seconds"].get<double>(), 1.0, 0.1);
    EXPECT_THAT(result.err, HasSubstr("======== Encoding Completed ========\n"));
}

TEST_F(ConsoleModes, JsonNumbersTheCommandsOfTheInputAndTheFilesOfAFolder) {
    std::filesystem::create_directories(folder / "in");
    std::filesystem::copy_file(clip, folder / "in/good.avi");
    std::ofstream(folder / "in/bad.avi") << "no media\n";
    std::ofstream(folder / "in/film.MP4") << "no media\n";
    const CommandResult result = Feed(folder, "--json -",
                                      "-v_codecs\n-profile av100 -input " + (folder / "in") +
                                          " -output " + (folder / "out") + "\n");
    EXPECT_EQ(result.status, 2) << result.err;
    std::vector<Json> reports;
    std::map<std::string, Json> files;
    for (const Json& object : Objects(result.out)) {
        if (object["type"] == "report") reports.push_back(object);
        if (object["type"] == "file") files[object["input"]] = object;
    }
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_EQ(reports[0]["command"], 1);
    EXPECT_EQ(reports[1]["command"], 2);
    EXPECT_EQ(reports[1]["files_completed"], 1);
    EXPECT_EQ(reports[1]["files_failed"], 1);
    EXPECT_EQ(reports[1]["files_skipped"], Json({{".mp4", 1}}));
    EXPECT_THAT(result.err, HasSubstr("1 file encoded, 1 failed, 1 skipped (1 .mp4)"));
    EXPECT_EQ(files[folder / "in/good.avi"]["state"], "completed");
    EXPECT_EQ(files[folder / "in/bad.avi"]["error"]["number"], 0x8007000D);
}

TEST_F(ConsoleModes, AWalkLosesNoFileAndWaitsForNone) {
    const std::string in = folder / "in";
    std::filesystem::create_directories(folder / "in/s\\t");
    std::filesystem::copy_file(clip, folder / "in/a.avi");
    std::filesystem::copy_file(folder / "in/a.avi", folder / "in/s\\t/b\\c%5C.avi");
    std::filesystem::copy_file(folder / "in/a.avi", folder / "in/a.wmv");
    ASSERT_EQ(::mkfifo((in + "/pipe.avi").c_str(), 0600), 0);
    std::filesystem::create_directory_symlink("s\\t", folder / "in/link");

    const CommandResult result =
        Console({"-input", in, "-output", in, "-profile", "av100", "-silent"});
    EXPECT_EQ(result.status, 2) << result.out << result.err;
    for (const char* line :
         {"Skipping: pipe.avi\n", "Skipping: a.avi, since ", "Skipping: a.wmv, since "})
        EXPECT_THAT(result.out, HasSubstr(line));
    EXPECT_EQ(std::filesystem::file_size(in + "/a.wmv"), std::filesystem::file_size(in + "/a.avi"));
    EXPECT_EQ(DecodeMessages(in + "/s\\t/b\\c%5C.wmv"), "");
}

constexpr int kCopies = 6000;  // of a second each

/// Encodes many copies of the clip, with a signal when so many objects have told of something that
/// has been encoded.
CommandResult RunWithSignal(const TempFolder& folder, const std::string& clip,
                            const std::string& profile, int objects) {
    Ffmpeg("-stream_loop " + std::to_string(kCopies - 1) + " -i " + clip + " -c copy",
           folder / "long.avi");
    const std::string pipe = folder / "pipe";
    return RunCommand(
        {"sh", "-c",
         "mkfifo " + pipe + "; " + TESSIVO_CONSOLE + " --json -input " + (folder / "long.avi") +
             " -profile " + profile + " -v_performance 0 -output " + (folder / "a.wmv") + " > " +
             pipe + " & { n=" + std::to_string(objects) +
             "; while [ $n -gt 0 ] && read -r line; do echo \"$line\"; case $line in "
             "*'\"seconds\":0.0'*);; *) n=$((n - 1));; esac; done; kill -TERM $!; cat; } < " +
             pipe + "; wait $!"});
}

TEST_F(ConsoleModes, ASignalInTheFirstOfTwoPassesEndsTheSecondToo) {
    const CommandResult result = RunWithSignal(folder, clip, "av100_2p", 5);
    EXPECT_EQ(result.status, 130) << result.err;
    for (const Json& object : Objects(result.out)) {
        if (object["type"] != "report") continue;
        EXPECT_LT(object["file_seconds"].get<double>(), kCopies / 10.0);
    }
    EXPECT_EQ(DecodeMessages(folder / "a.wmv"), "");
}

TEST_F(ConsoleModes, ASignalEndsInAReportOfTheStop) {
    const CommandResult result = RunWithSignal(folder, clip, "av350", 1);
    const std::string out = folder / "a.wmv";
    EXPECT_EQ(result.status, 130) << result.err;
    EXPECT_THAT(result.err, HasSubstr("\nStopped by user.\n  Done.\n"));
    const std::vector<Json> objects = Objects(result.out);
    ASSERT_FALSE(objects.empty());
    EXPECT_EQ(objects.back()["type"], "report");
    EXPECT_EQ(objects.back()["state"], "stopped");
    EXPECT_EQ(objects.back()["exit_status"], 130);
    EXPECT_EQ(DecodeMessages(out), "");
}

}  // namespace
}  // namespace test_support
