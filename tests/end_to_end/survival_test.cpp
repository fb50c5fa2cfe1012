// Runs that are killed, or that lose their disk, folder or rights: what they leave behind.
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <random>
#include <sstream>

#include "end_to_end/console_run.h"
#include "support/asf_reader.h"

namespace test_support {
namespace {

namespace fs = std::filesystem;

std::uintmax_t SizeOf(const std::string& path) {
    std::error_code none;
    const std::uintmax_t size = fs::file_size(path, none);
    return none ? 0 : size;
}

/// Of times, one a line; the one of a frame that a decoder gives only at the end is not known.
double LatestTime(const std::string& lines) {
    double latest = 0;
    std::istringstream in(lines);
    for (std::string line; std::getline(in, line);)
        latest = std::max(latest, std::atof(line.c_str()));
    return latest;
}

TEST(Survival, AKilledRunPlaysAndIsMadeWhole) {
    const TempFolder folder;
    MakeClip(folder / "clip.avi", 4);
    const std::string input =  // more than is let be encoded
        Ffmpeg("-stream_loop -1 -i " + (folder / "clip.avi") + " -t 600 -c copy",
               folder / "long.avi");
    const unsigned seed = std::random_device()();
    std::cout << "seed " << seed << "\n";
    std::mt19937 random(seed);
    std::uniform_int_distribution<std::uintmax_t> moment(60'000, 900'000);
    const std::string file = folder / "out.wmv";
    const std::string part = file + ".part";
    for (int run = 0; run < 5; ++run) {
        const std::uintmax_t bytes = moment(random);
        SCOPED_TRACE("seed " + std::to_string(seed) + ", at " + std::to_string(bytes));
        fs::remove(file);
        {
            BackgroundCommand command({TESSIVO_CONSOLE, "-input", input, "-output", file,
                                       "-profile", "av350", "-v_performance", "0"},
                                      folder.path());
            while (SizeOf(part) < bytes) usleep(5'000);
            command.Signal(SIGKILL);
            EXPECT_EQ(command.Wait().status, 128 + SIGKILL);
        }
        EXPECT_FALSE(fs::exists(file));
        const asf_reader::File cut = asf_reader::ReadFile(part);
        // The last packet tells how far the encoder had come when it was written.
        const double encoded = cut.packets.back().send_ms / 1000.0;
        const CommandResult played =
            RunCommand({"ffprobe", "-v", "quiet", "-select_streams", "v", "-show_entries",
                        "frame=best_effort_timestamp_time", "-of", "csv=p=0", part});
        EXPECT_GT(LatestTime(played.out), encoded - 1);

        const CommandResult repair = Console({"--repair", part});
        ASSERT_EQ(repair.status, 0) << repair.err;
        EXPECT_NE(repair.out.find("Written: " + file), std::string::npos) << repair.out;
        EXPECT_FALSE(fs::exists(part));
        EXPECT_EQ(DecodeMessages(file), "");
        const asf_reader::File whole = asf_reader::ReadFile(file);  // checks every size and count
        EXPECT_EQ(whole.objects.size(), cut.objects.size());
        EXPECT_NEAR(ProbeNumber(file, "", "duration"), encoded, 1.0);
        const std::string sought_second = std::to_string(static_cast<int>(encoded / 2));
        const CommandResult seek =
            RunCommand({"ffprobe", "-v", "error", "-select_streams", "v", "-show_entries",
                        "packet=pts_time,flags", "-of", "csv=p=0", "-read_intervals",
                        sought_second + "%+#1", file});
        EXPECT_LE(std::atof(seek.out.c_str()), encoded / 2 + 0.1) << seek.out;
        EXPECT_NE(seek.out.find(",K"), std::string::npos) << seek.out;

        const std::string bytes_before = FileText(file);
        const CommandResult again = Console({"--repair", file});
        EXPECT_EQ(again.status, 0);
        EXPECT_NE(again.out.find("Left as it is"), std::string::npos) << again.out;
        EXPECT_TRUE(FileText(file) == bytes_before);
    }
}

constexpr std::uintmax_t kBlock = 512;  // of the shell's limit

/// No file that the command writes grows past `room` bytes.
CommandResult RunLimited(std::uintmax_t room, const std::vector<std::string>& words) {
    std::vector<std::string> limited = {
        "sh", "-c", "ulimit -f " + std::to_string(room / kBlock) + "; exec \"$@\"", "sh"};
    limited.insert(limited.end(), words.begin(), words.end());
    return RunCommand(limited);
}

TEST(Survival, ADiskOfAnySizeLeavesAPlayablePart) {
    const TempFolder folder;
    const std::string input = folder / "clip.avi";
    MakeClip(input, 3, "160x120", 10);
    const std::string file = folder / "out.wmv";
    const std::vector<std::string> words = {
        TESSIVO_CONSOLE, "-input",         input, "-output", file, "-profile",
        "av100",         "-v_performance", "0"};
    ASSERT_EQ(RunCommand(words).status, 0);
    const std::uintmax_t whole = SizeOf(file);
    constexpr std::uintmax_t kSizes = 20;
    // The header, sound's first packet, which has none, and the first picture.
    constexpr std::uintmax_t kLeast = 12'000;
    ASSERT_GT(whole, kLeast + kSizes * kBlock);
    std::ofstream(file) << "an older file";
    for (std::uintmax_t i = 0; i < kSizes; ++i) {
        const std::uintmax_t room = kLeast + (whole - kBlock - kLeast) * i / (kSizes - 1);
        SCOPED_TRACE(room);
        fs::remove(file + ".part");
        const CommandResult result = RunLimited(room, words);
        ASSERT_EQ(result.status, 2) << result.out << result.err;
        EXPECT_EQ(CountOf(result.out, "Error: 0x80070070 - "), 1) << result.out;
        EXPECT_EQ(CountOf(result.out, "\nError occurred in transcoding: Error Code = 0x80070070\n"),
                  1);
        EXPECT_EQ(CountOf(result.out, "Encoding Completed") + CountOf(result.out, "Overall:"), 0);
        EXPECT_NE(result.out.find(file + ".part"), std::string::npos) << result.out;
        EXPECT_EQ(FileText(file), "an older file");
        EXPECT_EQ(DecodeMessages(file + ".part"), "");
        EXPECT_GT(ProbeNumber(file + ".part", "", "duration"), 0);
    }
}

TEST(Survival, WhatElseIsWrittenFailsAtALimitToo) {
    const TempFolder folder;
    MakeClip(folder / "clip.avi", 2, "160x120", 10);
    const std::string part = folder / "out.wmv.part";
    const std::vector<std::string> words = {"-input",           folder / "clip.avi", "-output",
                                            folder / "out.wmv", "-profile",          "av100"};
    std::vector<std::string> encode = words;
    encode.insert(encode.begin(), TESSIVO_CONSOLE);
    EXPECT_EQ(RunLimited(20 * kBlock, encode).status, 2);
    fs::resize_file(part, SizeOf(part) - 100);
    const std::string before = FileText(part);
    const CommandResult repair = RunLimited(5 * kBlock, {TESSIVO_CONSOLE, "--repair", part});
    EXPECT_EQ(repair.status, 2) << repair.out;
    EXPECT_NE(repair.err.find("the disk takes no larger file"), std::string::npos) << repair.err;
    EXPECT_EQ(FileText(part), before);
    EXPECT_FALSE(fs::exists(part + ".repair"));

    std::vector<std::string> save = encode;
    save.insert(save.end(), {"-title", std::string(600, 't'), "-s_config", folder / "saved.txt"});
    const CommandResult saved = RunLimited(kBlock, save);
    EXPECT_TRUE(saved.status == 1 || saved.status == 2) << saved.status << saved.out;
    EXPECT_NE((saved.out + saved.err).find("saved.txt"), std::string::npos) << saved.out;
}

TEST(Survival, WhatMayNotBeWrittenStays) {
    const TempFolder folder;
    MakeClip(folder / "clip.avi", 1);
    const std::string closed = folder / "closed";
    const std::string open = folder / "open";
    for (const std::string& each : {closed, open}) {
        fs::create_directory(each);
        std::ofstream(each + "/out.wmv") << "an older file";
    }
    fs::permissions(folder.path(), fs::perms(0755));
    fs::permissions(closed, fs::perms(0555));
    fs::permissions(open, fs::perms(0777));
    fs::permissions(open + "/out.wmv", fs::perms(0444));
    std::vector<std::string> words;
    if (geteuid() == 0) words = {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"};
    for (const char* word : {TESSIVO_CONSOLE, "-profile", "av100", "-input"}) words.push_back(word);
    words.push_back(folder / "clip.avi");
    for (const std::string& each : {closed, open}) {
        SCOPED_TRACE(each);
        std::vector<std::string> run = words;
        run.insert(run.end(), {"-output", each + "/out.wmv"});
        const CommandResult result = RunCommand(run);
        EXPECT_NE(result.status, 0);
        EXPECT_EQ(CountOf(result.out, "access is denied"), 1) << result.out << result.err;
        EXPECT_NE(result.out.find(each + "/out.wmv"), std::string::npos) << result.out;
        EXPECT_EQ(FileText(each + "/out.wmv"), "an older file");
        EXPECT_FALSE(fs::exists(each + "/out.wmv.part"));
    }
    fs::permissions(closed, fs::perms(0755));
}

}  // namespace
}  // namespace test_support
