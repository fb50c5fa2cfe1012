#include "app/statistics_report.h"

#include "unit/app/session_fixture.h"

namespace app {
namespace {

using platform::Currency;
using std::chrono::milliseconds;
using std::chrono::seconds;
using Lines = std::vector<std::string>;

const Lines kAudioBlock = {
    "",
    "Audio :",
    "\tCodec: \t\t\tWindows Media Audio 9",
    "\tExpected bit rate: \t\t64,040.0 bps",
    "\tAverage bit rate:     \t\t63,999.0 bps",
    "\tExpected sample rate: \t44,100.0",
    "\tAverage sample rate:  \t44,099.0",
    "\tDropped byte count:   \t1,234 bytes",
    "\tDropped sample rate:  \t5.0",
    "\tTotal bytes:          \t\t12,345,678 bytes",
};
const Lines kVideoBlock = {
    "",
    "Video :",
    "\tCodec: \t\t\tWindows Media Video 8",
    "\tExpected bit rate: \t\t1,000,000.0 bps",
    "\tAverage bit rate: \t\t987,654.0 bps",
    "\tExpected fps: \t\t30",
    "\tDropped frame count: \t12",
    "\tTotal coded frames: \t1,798",
    "\tAverage sample rate: \t29.967",
    "\tDropped bytes: \t\t3,456 bytes",
    "\tTotal bytes: \t\t4,294,967,296 bytes",
};
const Lines kOverallBlock = {
    "",
    "Overall:",
    "\tEncoding time: \t\t61 secs",
    "\tAverage bit rate: \t\t1,051,653 bps",
    "\tFile size: \t\t\t4,307,312,974 bytes ",
    "\tFile duration: \t\t60 seconds ",
};

class StatisticsReportTest : public SessionFixture {
  protected:
    StatisticsReportTest() {
        session.g_objEncoder = encoder;
        session.g_objFSO = factory.files;
        session.AudioCodecName = "Windows Media Audio 9";
        session.VideoCodecName = "Windows Media Video 8";
        settings.output = "out.wmv";
        auto& statistics = encoder->statistics;
        constexpr auto kCount = Currency::FromRaw;
        statistics.audio = {
            64040, 63999, 0, 44100, 44099, kCount(1234), kCount(5), kCount(12345678), {}};
        statistics.video = {1000000,     987654,       0,          29970,
                            29967,       kCount(3456), kCount(12), kCount(4294967296),
                            kCount(1798)};
        statistics.total.average_bit_rate_bps = 1051653;
        statistics.archive = {kCount(4307312974), kCount(59500)};
    }

    Lines Report(WallTime start, WallTime end) {
        StatisticsReport(window, factory, session, settings, pane).ShowStatistics(start, end);
        return pane.Take();
    }
    Lines Report() { return Report(now, now + seconds(61)); }

    static Lines Without(Lines lines, const std::string& label) {
        std::erase_if(
            lines, [&](const std::string& line) { return line.find(label) != std::string::npos; });
        return lines;
    }
    static Lines Together(Lines lines, const Lines& more) {
        lines.insert(lines.end(), more.begin(), more.end());
        return lines;
    }
};

TEST_F(StatisticsReportTest, HasABlockForEachSourceAndOneOverall) {
    EXPECT_EQ(Report(), kOverallBlock);
    AddVideo();
    EXPECT_EQ(Report(), Together(kVideoBlock, kOverallBlock));
    AddAudio();
    EXPECT_EQ(Report(), Together(kAudioBlock, Together(kVideoBlock, kOverallBlock)));
    session.g_objSrcVid = nullptr;
    EXPECT_EQ(Report(), Together(kAudioBlock, kOverallBlock));
}

TEST_F(StatisticsReportTest, WithoutAnOutputTheFileIsNotAskedFor) {
    settings.output.clear();
    factory.log->Fail("Statistics.FileArchiveStats", platform::kFileNotFound, "no file");
    EXPECT_EQ(Report(), Without(kOverallBlock, "\tFile "));
    EXPECT_TRUE(window.log->lines.empty());
}

TEST_F(StatisticsReportTest, WhatWentOverTheNetworkHasItsLines) {
    encoder->statistics.network.broadcast = {{}, 1, 17, 1234, 5'000'000'000, 90};
    encoder->statistics.network.push = {"media/live", true, 2, 7000, 3};
    EXPECT_EQ(Report(), Together(kOverallBlock,
                                 {"\tClients served: \t\t1,234", "\tMost clients at once: \t\t17",
                                  "\tBytes sent: \t\t\t5,000,000,000 bytes",
                                  "\tFrames withheld: \t\t90", "\tBytes pushed: \t\t\t7,000 bytes",
                                  "\tFrames not pushed: \t\t3", "\tReconnections: \t\t2"}));
}

TEST_F(StatisticsReportTest, EncodingTimeCountsSecondBoundaries) {
    struct Case {
        const char* why;
        milliseconds start, end;
        const char* text;
    };
    const Case cases[] = {
        // why                            start              end                 text
        {"one boundary within 20 ms", milliseconds(990), milliseconds(1010), "1"},
        {"none within 980 ms", milliseconds(1010), milliseconds(1990), "0"},
        {"grouped like any number", milliseconds(0), milliseconds(3600999), "3,600"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Report(now + c.start, now + c.end)[2],
                  std::string("\tEncoding time: \t\t") + c.text + " secs")
            << c.why;
}

TEST_F(StatisticsReportTest, AFailureKeepsTheLinesSoFarAndShowsTheBox) {
    struct Case {
        const char* operation;
        Lines lines;
    };
    const Case cases[] = {
        {"Statistics.FileArchiveStats", Without(kOverallBlock, "\tFile ")},
        {"Statistics.WMFOutputStats",
         Without(Without(kOverallBlock, "\tFile "), "Average bit rate")},
    };
    for (const Case& c : cases) {
        factory.log->Fail(c.operation, platform::kFileNotFound, "no file", 1);
        StatisticsReport report(window, factory, session, settings, pane);
        EXPECT_FALSE(report.ShowStatistics(now, now + seconds(61)));
        EXPECT_EQ(pane.Take(), c.lines) << c.operation;
        EXPECT_EQ(WindowLog(),
                  Lines{"MessageBox(Output file could not be created.  Please make sure\r\nyou "
                        "have permission to create a file in the selected output directory., "
                        "ERROR:  File Access, 16)"})
            << c.operation;
    }
}

TEST_F(StatisticsReportTest, FileInfoIsOneTextOfTheAbsolutePath) {
    settings.input = "clip.avi";
    StatisticsReport(window, factory, session, settings, pane).PrintFileInfo();
    EXPECT_TRUE(factory.log->Has("MediaInfo.FileName=/home/clip.avi"));
    EXPECT_EQ(pane.Take(), Lines{factory.media_info->description});
}

}  // namespace
}  // namespace app
