// What the host starts and what it reads from media files.
#include <sys/wait.h>

#include <cerrno>
#include <filesystem>
#include <fstream>

#include "platform/host/helper_process.h"
#include "platform/host/media_info_reader.h"
#include "platform/host/posix_shell.h"
#include "platform/posix/file_descriptor.h"
#include "support/commands.h"
#include "support/error_of.h"

namespace {

using platform::WindowStyle;
using platform::host::HelperOutput;
using platform::host::MediaInfoReader;
using platform::host::PathNames;
using platform::host::PosixShell;
using platform::host::SplitCommand;
using test_support::ErrorNumber;
using testing::ElementsAre;
using testing::HasSubstr;

TEST(Shell, QuotationMarksHoldBlanks) {
    EXPECT_THAT(SplitCommand("  viewer \"C:\\program files\\a.chm\" \"\" b\"c d\"e "),
                ElementsAre("viewer", "C:\\program files\\a.chm", "", "bc de"));
}

TEST(Shell, ArgumentsReachTheProgramUntouched) {
    const test_support::TempFolder folder;
    const std::string script = folder / "say it";
    std::ofstream(script) << "#!/bin/sh\nprintf '<%s>' \"$@\" > \"$0.out\"\n";
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    PosixShell shell(PathNames(folder.path().string()));
    shell.Run("\"C:\\say it\" \"a b\" $HOME * ;", WindowStyle::Normal, true);
    EXPECT_EQ(test_support::FileText(script + ".out"), "<a b><$HOME><*><;>");
}

TEST(Shell, WhatCannotBeStartedIsNamed) {
    PosixShell shell(PathNames("/nowhere"));
    const auto run = [&](const std::string& command) {
        return [&shell, command] { shell.Run(command, WindowStyle::ShownWithoutFocus, false); };
    };
    EXPECT_EQ(ErrorNumber(run("C:\\Windows\\hh.exe \"C:\\a b.chm\""), {"/nowhere/Windows/hh.exe"}),
              platform::kFileNotFound);
    EXPECT_EQ(ErrorNumber(run("no-such-program-here"), {"no-such-program-here"}),
              platform::kFileNotFound);
    EXPECT_EQ(ErrorNumber(run("/etc"), {"/etc"}), platform::kAccessDenied);
    EXPECT_EQ(ErrorNumber(run("   "), {"program"}), platform::kInvalidArgument);
}

struct HelperCase {
    const char* why;
    const char* script;
    std::chrono::milliseconds time;
    bool stopped;
    HelperOutput::End end;
    const char* text;  // null = any
};

constexpr std::chrono::milliseconds kAtOnce{0};
constexpr std::chrono::milliseconds kNever = std::chrono::hours(1);

// clang-format off
const HelperCase kHelperCases[] = {
    // why                        script                                    time     stopped  end                           text
    {"ends by itself",            "echo one; echo two >&2; exit 3",         kNever,  false,   HelperOutput::End::ByItself,  "one\n"},
    {"would wait for an input",   "cat; echo over",                         kNever,  false,   HelperOutput::End::ByItself,  "over\n"},
    {"has no other descriptors",  "[ ! -e /proc/$$/fd/90 ] && echo closed", kNever,  false,   HelperOutput::End::ByItself,  "closed\n"},
    {"takes too long",            "exec sleep 1000",                        kAtOnce, false,   HelperOutput::End::TooLong,   ""},
    {"is stopped",                "exec sleep 1000",                        kNever,  true,    HelperOutput::End::Stopped,   ""},
    {"writes without end",        "exec yes",                               kNever,  false,   HelperOutput::End::TooLong,   nullptr},
};
// clang-format on

TEST(Helper, RunsWithinItsLimits) {
    const platform::FileDescriptor inherited(::dup2(STDERR_FILENO, 90));
    for (const HelperCase& row : kHelperCases) {
        SCOPED_TRACE(row.why);
        const HelperOutput output = platform::host::RunHelper(
            {"/bin/sh", "-c", row.script}, {row.time, 100'000}, [&] { return row.stopped; });
        EXPECT_EQ(output.end, row.end);
        if (row.text != nullptr) {
            EXPECT_EQ(output.text, row.text);
        }
        EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a process is left";
    }
}

TEST(Helper, WhatCannotBeStartedIsNamed) {
    const test_support::TempFolder folder;
    const std::string program = folder / "helper";
    const auto run = [&] {
        platform::host::RunHelper({program}, {kNever, 100}, [] { return false; });
    };
    EXPECT_EQ(ErrorNumber(run, {program, "does not exist", "Install"}), platform::kUnspecified);
    std::ofstream(program) << "#!/bin/sh\nexit 127\n";
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    EXPECT_EQ(ErrorNumber(run, {program, "lacks a library", "Install"}), platform::kUnspecified);
}

class MediaInfoOfFiles : public testing::Test {
  protected:
    MediaInfoReader About(const std::string& name) const {
        MediaInfoReader info(PathNames(folder_.path().string()), [] { return false; });
        info.SetFileName("C:\\" + name);
        return info;
    }
    test_support::TempFolder folder_;
};

TEST_F(MediaInfoOfFiles, RateAndDescriptionOfAClip) {
    test_support::Ffmpeg("-f lavfi -i testsrc=s=64x48:r=12.5 -f lavfi -i sine=r=22050 -t 1",
                         folder_ / "a clip.avi");
    MediaInfoReader info = About("a clip.avi");
    EXPECT_DOUBLE_EQ(info.FrameRate(), 12.5);
    const std::string text = info.Description();
    for (const char* part : {"a clip.avi", "64 pixels", "12.500 FPS", "22.05 kHz", "\r\n"})
        EXPECT_THAT(text, HasSubstr(part));
    EXPECT_NE(text.back(), '\n');
}

TEST_F(MediaInfoOfFiles, WithoutPictureTheRateIsZero) {
    test_support::Ffmpeg("-f lavfi -i sine -t 1", folder_ / "tone.wav");
    EXPECT_EQ(About("tone.wav").FrameRate(), 0);
    EXPECT_THAT(About("tone.wav").Description(), HasSubstr("PCM"));
}

// Each makes the library gather entries that are not there, for as long as it is let.
TEST_F(MediaInfoOfFiles, WhatTakesTooMuchIsGivenUp) {
    test_support::Ffmpeg("-f lavfi -i testsrc=s=64x48:r=10 -f lavfi -i sine -t 1 -c:a aac",
                         folder_ / "whole.mp4");
    const std::string whole = test_support::FileText(folder_ / "whole.mp4");
    constexpr std::pair<const char*, std::size_t> kCounts[] = {{"sbgp", 12}, {"elst", 8}};
    for (const auto& [box, distance] : kCounts) {
        SCOPED_TRACE(box);
        std::string damaged = whole;
        damaged.replace(damaged.rfind(box) + distance, 4, "\x5c\x3c\xbb\xd6");
        const std::string name = std::string(box) + ".mp4";
        std::ofstream(folder_ / name, std::ios::binary) << damaged;
        EXPECT_EQ(ErrorNumber([&] { About(name).Description(); }, {name, "damaged"}),
                  platform::kInvalidData);
    }
    EXPECT_EQ(About("elst.mp4").FrameRate(), 0);
}

TEST_F(MediaInfoOfFiles, WhatIsNoMediaIsNamed) {
    std::ofstream(folder_ / "notes.txt") << "nothing to see\n";
    EXPECT_EQ(About("notes.txt").FrameRate(), 0);
    EXPECT_EQ(About("missing.avi").FrameRate(), 0);
    EXPECT_EQ(ErrorNumber([&] { About("notes.txt").Description(); }, {"notes.txt"}),
              platform::kInvalidData);
    EXPECT_EQ(ErrorNumber([&] { About("missing.avi").Description(); }, {"missing.avi"}),
              platform::kFileNotFound);
    EXPECT_EQ(ErrorNumber([&] { About("").Description(); }, {folder_.path().string()}),
              platform::kInvalidData);
}

}  // namespace
