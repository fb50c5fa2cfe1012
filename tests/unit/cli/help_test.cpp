#include "cli/help.h"

#include <algorithm>

#include "support/fake_host.h"

namespace cli_tests {
namespace {

using Lines = std::vector<std::string>;

Lines Help() { return {cli::HelpLines().begin(), cli::HelpLines().end()}; }

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

TEST(Help, OptionsStandInTheirOrder) {
    const Lines expected = {
        "[-wme] <Windows Media Encoder session file>",
        "[-input] <file or directory name>",
        "[-adevice] <audio device number>",
        "[-vdevice] <video device number>",
        "[-output] <file or directory name>",
        "[-outputstring] <string>",
        "[-broadcast] <port>",
        "[-time] <start time> <end time>",
        "[-silent]",
        "[-config] <input configuration file>",
        "[-s_config] <output configuration file>",
        "[-profile] <profile code>",
        "[-loadprofile] <profile file name>",
        "[-a_codec] <codec index>",
        "[-a_codecs]",
        "[-a_content] <mode>",
        "[-a_contentedl] <file name>",
        "[-a_folddown6to2] <surround mix> <center mix> <LFE>",
        "[-a_formats]",
        "[-a_mode] <mode_number>",
        "[-a_peakbitrate] <peak bit rate>",
        "[-a_peakbuffer] <peak buffer>",
        "[-a_setting] <setting>",
        "[-audioonly]",
        "[-v_codec] <codec index>",
        "[-v_width] <width>",
        "[-v_height] <height>",
        "[-v_framerate] <rate>",
        "[-v_keydist] <time>",
        "[-v_preproc] <filter number>",
        "[-v_clip] <left> <top> <right> <bottom>",
        "[-v_mode] <mode number>",
        "[-v_bitrate] <bit rate>",
        "[-v_buffer] <buffer>",
        "[-v_quality] <quality>",
        "[-v_peakbitrate] <peak bit rate>",
        "[-v_peakbuffer] <peak buffer>",
        "[-v_performance] <performance>",
        "[-v_profile] <device conformance>",
        "[-duration] <seconds>",
        "[-saveprofile] <file name>",
        "[-devices]",
        "[-v_codecs]",
        "[-videoonly]",
        "[-pixelratio] <x y>",
        "[-pixelformat] <format>",
        "[-maxpacket] <packet size>",
        "[-minpacket] <packet size>",
        "[-title] <string>",
        "[-author] <string>",
        "[-copyright] <string>",
        "[-description] <string>    ",
        "[-rating] <string>",
    };
    Lines found;
    for (const std::string& line : Help())
        if (!line.empty() && line.front() == '[') found.push_back(line);
    EXPECT_EQ(found, expected);
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
        {"[-a_mode] <mode_number>",
         {"    0: 1-pass CBR (default).", "    1: 2-pass CBR.", "    2: Quality-based VBR.",
          "    3: Bit rate-based VBR (two-pass).", "    4: Bit rate-based peak VBR (two-pass)."}},
        {"[-v_mode] <mode number>",
         {"    0: 1-pass CBR (default).", "    1: 2-pass CBR.", "    2: Quality-based VBR.",
          "    3: Bit rate-based VBR (two-pass).", "    4: Peak bit rate-based VBR (two-pass)."}},
        {"[-pixelformat] <format>",
         {"    I420", "    IYUV", "    RGB24", "    RGB32", "    RGB555", "    RGB565", "    RGB8",
          "    UYVY", "    YUY2", "    YV12", "    YVU9", "    YVYU"}},
        {"[-v_preproc] <filter number>",
         {"    16: Interlaced encoding.", "    17: Interlaced encoding - First field is top field.",
          "    18: Interlaced encoding - First field is bottom field.", "    Default: 0: None."}},
        {"[-v_bitrate] <bit rate>", {"    Default: 250000 bps."}},
        {"[-v_buffer] <buffer>", {"    Default: 5000 msec."}},
        {"[-v_framerate] <rate>", {"    Default: 30 fps."}},
        {"[-v_keydist] <time>", {"    Default: 10 seconds."}},
        {"[-v_peakbuffer] <peak buffer>", {"    Default: 5000 msec."}},
        {"[-a_peakbuffer] <peak buffer>", {"    Default: 3000 msec."}},
        {"[-a_setting] <setting>", {"    The default is 64_44_2."}},
        {"Codes and basic descriptions for the predefined profiles:",
         {
             "Audio/Video:",
             "    av20: Profile_AudioVideo_Modem_28K (actual rate: 20Kbps)",
             "    av32: Profile_AudioVideo_Modem_56K (32 Kbps)",
             "    av100: Profile_AudioVideo_LAN_100K (100 Kbps)",
             "    av225: Profile_AudioVideo_LAN_256K (225 Kbps)",
             "    av350: Profile_AudioVideo_LANDSL_384K (350 Kbps)",
             "    av450: Profile_AudioVideo_LANDSL_768K (450 Kbps)",
             "    av700: Profile_AudioVideo_NearBroadcast_700K (700 Kbps)",
             "    av1400: Profile_AudioVideo_NearBroadcast_1400K (1400 Kbps)",
             "    av350pal: Profile_AudioVideo_Broadband_PAL_384K (350 Kbps)",
             "    av700pal: Profile_AudioVideo_NearBroadcast_PAL_700K (700 Kbps)",
             "    av100_2p: Profile_AudioVideo_LAN_100K_2Pass (100 Kbps)",
             "    av350_2p: Profile_AudioVideo_LANDSL_384K_2Pass (350 Kbps)",
             "    av600vbr: Profile_AudioVideo_FilmVBR_600K (600 Kbps)",
             "    avq97vbr: Profile_AudioVideo_FilmVBR_Quality97 (Quality 97)",
             "",
             "Audio-only:",
             "    a20_1: Profile_AudioOnly_FMRadioMono_28K (20 Kbps)",
             "    a20_2: Profile_AudioOnly_FMRadioStereo_28K (20 Kbps)",
             "    a32: Profile_AudioOnly_Modem_56K (32 Kbps)",
             "    a48: Profile_AudioOnly_NearCDQuality_48K (48 Kbps)",
             "    a64: Profile_AudioOnly_CDQuality_64K (64 Kbps)",
             "    a96: Profile_AudioOnly_CDAudiophileQuality_96K (96 Kbps)",
             "    a128: Profile_AudioOnly_CDAudiophileQuality_128K (128 Kbps)",
             "",
             "Video-only:",
             "    v20: Profile_VideoOnly_Modem_28K (20 Kbps)",
             "    v32: Profile_VideoOnly_Modem_56K (32 Kbps)",
             "",
             "Screen Capture:",
             "    scrn:  Profile_Screen Capture",
             "    scrna: Profile_Screen_Capture with Audio",
             "    scrnab: Profile_Screen Capture with Basic Audio",
             "",
             "    scrn10:  Profile_Screen Capture",
             "    scrn10a: Profile_Screen Capture with Audio",
             "",
             "    scrn15:  Profile_Screen Capture",
             "    scrn15a: Profile_Screen Capture with Audio",
             "",
             "    scrn24:  Profile_Screen Capture",
             "    scrn24a: Profile_Screen Capture with Audio",
             "",
             "    scrn30:  Profile_Screen Capture",
             "    scrn30a: Profile_Screen Capture with Audio",
         }},
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

TEST(Help, FiltersAreNumberedThroughout) {
    const Lines help = Help();
    const auto entry = std::find(help.begin(), help.end(), "[-v_preproc] <filter number>");
    ASSERT_NE(entry, help.end());
    Lines numbers, wrapped;
    int examples = 0;
    for (auto line = entry + 1; line->front() != '['; ++line) {
        if (const std::size_t colon = line->find(": "); line->find_first_of("0123456789") == 4)
            numbers.push_back(line->substr(4, colon - 4));
        if (line->find("pattern.") != std::string::npos && line->find(':') == std::string::npos)
            wrapped.push_back(*line);
        if (line->rfind("       Example: ", 0) == 0) ++examples;
    }
    Lines expected;
    for (int number = 0; number <= 18; ++number) expected.push_back(std::to_string(number));
    EXPECT_EQ(numbers, expected);
    EXPECT_EQ(examples, 4);
    EXPECT_EQ(std::count(wrapped.begin(), wrapped.end(), "      pattern."), 1);
    EXPECT_EQ(std::count(wrapped.begin(), wrapped.end(), "       pattern."),
              static_cast<std::ptrdiff_t>(wrapped.size()) - 1);
}

TEST(Help, ShowHelpWritesEachLineByItself) {
    test_support::RecordingPane pane;
    cli::ShowHelp(pane);
    EXPECT_EQ(pane.lines, Help());
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
