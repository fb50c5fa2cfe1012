// What the host starts and what it reads from media files.
#include <sys/wait.h>

#include <cerrno>
#include <filesystem>
#include <fstream>

#include "platform/host/media_info_reader.h"
#include "platform/host/posix_shell.h"
#include "support/commands.h"
#include "support/error_of.h"

namespace {

using platform::WindowStyle;
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

class MediaInfoOfFiles : public testing::Test {
  protected:
    MediaInfoReader About(const std::string& name) const {
        MediaInfoReader info(PathNames(folder_.path().string()));
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
