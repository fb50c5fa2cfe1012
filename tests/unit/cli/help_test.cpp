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

// Every run of empty lines, told by its length and the line behind it.
TEST(Help, EmptyLinesStandAtTheirPlaces) {
    const Lines expected = {
        "2 Usage for I/O and statistics.",
        "1 [-wme] <Windows Media Encoder session file>",
        "2 Usage for profiles.",
        "1 [-profile] <profile code>",
        "1 Codes and basic descriptions for the predefined profiles:",
        "1 Audio-only:",
        "1 Video-only:",
        "1 Screen Capture:",
        "1     scrn10:  Profile_Screen Capture",
        "1     scrn15:  Profile_Screen Capture",
        "1     scrn24:  Profile_Screen Capture",
        "1     scrn30:  Profile_Screen Capture",
        "1 [-loadprofile] <profile file name>",
        "2 Usage for audio settings.",
        "1 [-a_codec] <codec index>",
        "1     <bit rate>_<sampling rate>_<channels>",
        "1     Q<quality>_<sampling rate>_<channels>",
        "1     <bit rate>_<sampling rate>_<channels>_<bits per sample>",
        "1     Q100_<sampling rate>_<channels>_<bits per sample>",
        "4 Usage for video settings.",
        "1 [-v_codec] <codec index>",
        "1 [-title] <string>",
    };
    Lines found;
    int run = 0;
    for (const std::string& line : Help()) {
        if (!line.empty() && run > 0) found.push_back(std::to_string(run) + " " + line);
        run = line.empty() ? run + 1 : 0;
    }
    EXPECT_EQ(found, expected);
    const Lines help = Help();
    const auto profiles = std::find(help.begin(), help.end(), "Usage for profiles.");
    EXPECT_EQ(profiles[3], "") << "the heading, two lines, then the gap";
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

struct ListCase {
    const char* option;  // the list is searched behind this line
    Lines lines;
};

TEST(Help, ListsAreToTheLetter) {
    const ListCase cases[] = {
        {"[-a_codec] <codec index>",
         {"    Specify codec index:", "    WMA9STD: Windows Media Audio 9 (default).",
          "    WMA9PRO: Windows Media Audio 9 Professional",
          "    WMSP9:   Windows Media Audio 9 Voice",
          "    WMA9LSL:  Windows Media Audio 9 Lossless; -a_mode 2 required",
          "    PCM: No compression"}},
        {"[-v_codec] <codec index>",
         {"    Specify codec index:", "       WMV7: Windows Media Video 7.",
          "       WMV8: Windows Media Video 8.1.", "       WMV9: Windows Media Video 9 (default).",
          "       WMS9: Windows Media Video Screen 9.", "       MP41: ISO MPEG-4 Video v1",
          "       UNCOMP: Full frames (uncompressed)"}},
        {"[-pixelformat] <format>",
         {"    I420", "    IYUV", "    RGB24", "    RGB32", "    RGB555", "    RGB565", "    RGB8",
          "    UYVY", "    YUY2", "    YV12", "    YVU9", "    YVYU"}},
        {"[-v_preproc] <filter number>", {"    Default: 0: None."}},
        {"[-v_bitrate] <bit rate>", {"    Default: 250000 bps."}},
        {"[-v_buffer] <buffer>", {"    Default: 5000 msec."}},
        {"[-v_framerate] <rate>", {"    Default: 30 fps."}},
        {"[-v_keydist] <time>", {"    Default: 10 seconds."}},
        {"[-v_peakbuffer] <peak buffer>", {"    Default: 5000 msec."}},
        {"[-a_peakbuffer] <peak buffer>", {"    Default: 3000 msec."}},
        {"[-a_setting] <setting>", {"    The default is 64_44_2."}},
    };
    const Lines help = Help();
    for (const ListCase& row : cases) {
        SCOPED_TRACE(row.option);
        // The entry ends where the next option line begins.
        const auto entry = std::find(help.begin(), help.end(), row.option);
        ASSERT_NE(entry, help.end());
        const auto end = std::find_if(entry + 1, help.end(), [](const std::string& line) {
            return !line.empty() && line.front() == '[';
        });
        EXPECT_NE(std::search(entry, end, row.lines.begin(), row.lines.end()), end);
    }
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
