#include "cli/help.h"

#include <algorithm>

#include "support/fake_host.h"

namespace cli_tests {
namespace {

using Lines = std::vector<std::string>;

Lines Help() {
    const std::vector<std::string_view> lines = cli::HelpLines();
    return {lines.begin(), lines.end()};
}

TEST(Help, HasItsLinesAndNoOthers) {
    const Lines help = Help();
    EXPECT_EQ(help.size(), 308U);
    EXPECT_EQ(std::count(help.begin(), help.end(), ""), 28);
    for (const std::string& line : help) EXPECT_LE(line.size(), 79U) << line;
    EXPECT_EQ(Lines(help.begin(), help.begin() + 3),
              (Lines{"Encode from files or devices to Windows Media files or streams. Supported",
                     "source file formats are .wmv, .wma, .asf, .avi, .wav, .mpg, .mp3, .bmp,",
                     "and .jpg."}));
    EXPECT_EQ(help.back(), "NOTE: The maximum string length for each one is 255.    ");
}

// The names of the values, the numbers of modes and filters and the profiles stand in the command
// reference, which a test compares with this text.
TEST(Help, OptionsStandInTheirOrder) {
    std::string found;
    for (const std::string& line : Help())
        if (!line.empty() && line.front() == '[') found += line.substr(1, line.find(']') - 1) + " ";
    EXPECT_EQ(found,
              "-wme -input -adevice -vdevice -output -outputstring -broadcast -time -silent "
              "-config -s_config "
              "-profile -loadprofile "
              "-a_codec -a_codecs -a_content -a_contentedl -a_folddown6to2 -a_formats -a_mode "
              "-a_peakbitrate -a_peakbuffer -a_setting -audioonly "
              "-v_codec -v_width -v_height -v_framerate -v_keydist -v_preproc -v_clip -v_mode "
              "-v_bitrate -v_buffer -v_quality -v_peakbitrate -v_peakbuffer -v_performance "
              "-v_profile -duration -saveprofile -devices -v_codecs -videoonly -pixelratio "
              "-pixelformat -maxpacket -minpacket "
              "-title -author -copyright -description -rating ");
}

TEST(Help, ShowHelpChmRunsTheViewerWithoutWaiting) {
    test_support::FakeFactory host;
    cli::ShowHelpChm(*host.files, *host.shell);
    EXPECT_EQ(host.log->lines,
              Lines{"Shell.Run(C:\\Windows\\hh.exe \"C:\\program files\\windows media "
                    "components\\encoder\\wmencutil.chm\", 4, false)"});
}

}  // namespace
}  // namespace cli_tests
