#include "app/statistics_report.h"

#include <fmt/core.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "app/number_pictures.h"
#include "platform/error.h"

namespace app {

namespace {

using platform::OutputStats;

constexpr std::int32_t kModeWithoutExpectedRate = 2;

/// One line of a stream's block: label, number through its picture, unit.
struct Line {
    std::string_view label;
    std::string_view picture;
    std::string_view unit;
    bool is_expected_rate;
    Decimal (*value)(const OutputStats&);
};

constexpr Decimal ExpectedRate(const OutputStats& s) { return {s.expected_bit_rate_bps, 0}; }
constexpr Decimal AverageRate(const OutputStats& s) { return {s.average_bit_rate_bps, 0}; }
constexpr Decimal ExpectedHz(const OutputStats& s) { return {s.expected_sample_rate, 0}; }
constexpr Decimal AverageHz(const OutputStats& s) { return {s.average_sample_rate, 0}; }
constexpr Decimal ExpectedFps(const OutputStats& s) { return {s.expected_sample_rate, 3}; }
constexpr Decimal AverageFps(const OutputStats& s) { return {s.average_sample_rate, 3}; }
constexpr Decimal DroppedBytes(const OutputStats& s) { return {s.dropped_byte_count.Raw(), 0}; }
constexpr Decimal DroppedSamples(const OutputStats& s) { return {s.dropped_sample_count.Raw(), 0}; }
constexpr Decimal Bytes(const OutputStats& s) { return {s.byte_count.Raw(), 0}; }
constexpr Decimal Samples(const OutputStats& s) { return {s.sample_count.Raw(), 0}; }

// The blocks' different spellings and pictures are the report's own. The audio block's "Dropped
// sample rate" is a count.
// clang-format off
constexpr Line kAudioLines[] = {
    // label                          picture            unit      expected  value
    {"\tExpected bit rate: \t\t",     "###,###,##0.0##", " bps",   true,     ExpectedRate},
    {"\tAverage bit rate:     \t\t",  "###,###,##0.0##", " bps",   false,    AverageRate},
    {"\tExpected sample rate: \t",    "###,###,##0.0##", "",       false,    ExpectedHz},
    {"\tAverage sample rate:  \t",    "###,###,##0.0##", "",       false,    AverageHz},
    {"\tDropped byte count:   \t",    "###,###,###,##0", " bytes", false,    DroppedBytes},
    {"\tDropped sample rate:  \t",    "###,###,##0.0##", "",       false,    DroppedSamples},
    {"\tTotal bytes:          \t\t",  "###,###,###,##0", " bytes", false,    Bytes},
};
constexpr Line kVideoLines[] = {
    // label                          picture            unit      expected  value
    {"\tExpected bit rate: \t\t",     "###,###,##0.0##", " bps",   true,     ExpectedRate},
    {"\tAverage bit rate: \t\t",      "###,###,##0.0##", " bps",   false,    AverageRate},
    {"\tExpected fps: \t\t",          "###,###,##0",     "",       false,    ExpectedFps},
    {"\tDropped frame count: \t",     "###,###,##0",     "",       false,    DroppedSamples},
    {"\tTotal coded frames: \t",      "###,###,##0",     "",       false,    Samples},
    {"\tAverage sample rate: \t",     "###,###,##0.0##", "",       false,    AverageFps},
    {"\tDropped bytes: \t\t",         "#,###,###,##0",   " bytes", false,    DroppedBytes},
    {"\tTotal bytes: \t\t",           "#,###,###,##0",   " bytes", false,    Bytes},
};
// clang-format on

std::string LineText(std::string_view label, std::string_view picture, Decimal value,
                     std::string_view unit) {
    return fmt::format("{}{}{}", label, FormatPicture(picture, value), unit);
}

void WriteLines(platform::OutputPane& pane, std::span<const Line> lines, const OutputStats& stats,
                std::optional<std::int32_t> mode) {
    for (const Line& line : lines) {
        if (line.is_expected_rate && mode == kModeWithoutExpectedRate) continue;
        pane.OutputInfo(LineText(line.label, line.picture, line.value(stats), line.unit));
    }
}

/// The second boundaries between two moments, however long the parts of a second beside them are.
std::int64_t SecondsBetween(WallTime start, WallTime end) {
    using std::chrono::floor;
    using std::chrono::seconds;
    return (floor<seconds>(end) - floor<seconds>(start)).count();
}

}  // namespace

bool StatisticsReport::ShowStatistics(WallTime start, WallTime end) {
    try {
        if (session_.g_objSrcAud) WriteAudio();
        if (session_.g_objSrcVid) WriteVideo();
        WriteOverall(start, end);
        return true;
    } catch (const platform::Error&) {
        window_.MessageBox(
            "Output file could not be created.  Please make sure\r\n"
            "you have permission to create a file in the selected output directory.",
            "ERROR:  File Access", platform::MessageIcon::Critical);
        return false;
    }
}

void StatisticsReport::WriteAudio() {
    const OutputStats stats =
        session_.g_objEncoder->Statistics().StreamOutputStats(platform::SourceType::Audio, 0, 0);
    pane_.OutputInfo("");
    pane_.OutputInfo("Audio :");
    pane_.OutputInfo("\tCodec: \t\t\t" + session_.AudioCodecName);
    WriteLines(pane_, kAudioLines, stats, settings_.a_mode);
}

void StatisticsReport::WriteVideo() {
    const OutputStats stats =
        session_.g_objEncoder->Statistics().StreamOutputStats(platform::SourceType::Video, 0, 0);
    pane_.OutputInfo("");
    pane_.OutputInfo("Video :");
    pane_.OutputInfo("\tCodec: \t\t\t" + session_.VideoCodecName);
    WriteLines(pane_, kVideoLines, stats, settings_.v_mode);
}

void StatisticsReport::WriteOverall(WallTime start, WallTime end) {
    platform::WMEncStatistics& statistics = session_.g_objEncoder->Statistics();
    pane_.OutputInfo("");
    pane_.OutputInfo("Overall:");
    pane_.OutputInfo(LineText("\tEncoding time: \t\t", "###,###,##0.##",
                              {SecondsBetween(start, end), 0}, " secs"));
    pane_.OutputInfo(LineText("\tAverage bit rate: \t\t", "####,##0.###",
                              AverageRate(statistics.WMFOutputStats()), " bps"));
    WriteFile(statistics);
    WriteNetwork(statistics);
}

void StatisticsReport::WriteFile(platform::WMEncStatistics& statistics) {
    if (settings_.output.empty()) return;
    const platform::FileArchiveStats file = statistics.FileArchiveStats();
    pane_.OutputInfo(
        LineText("\tFile size: \t\t\t", "###,####,###,##0", {file.file_size.Raw(), 0}, " bytes "));
    pane_.OutputInfo(LineText("\tFile duration: \t\t", "###,###,###,##0",
                              {file.file_duration.Raw(), 3}, " seconds "));
}

void StatisticsReport::WriteNetwork(platform::WMEncStatistics& statistics) {
    constexpr std::string_view kCount = "###,###,###,##0";
    const auto write = [&](std::string_view label, std::int64_t value, std::string_view unit) {
        pane_.OutputInfo(LineText(label, kCount, {value, 0}, unit));
    };
    const platform::NetworkStats network = statistics.NetworkStats();
    if (network.broadcast) {
        write("\tClients served: \t\t", network.broadcast->clients_served, "");
        write("\tMost clients at once: \t\t", network.broadcast->most_clients, "");
        write("\tBytes sent: \t\t\t", network.broadcast->bytes_sent, " bytes");
        write("\tFrames withheld: \t\t", network.broadcast->frames_withheld, "");
    }
    if (network.push) {
        write("\tBytes pushed: \t\t\t", network.push->bytes_sent, " bytes");
        write("\tFrames not pushed: \t\t", network.push->frames_dropped, "");
        write("\tReconnections: \t\t", network.push->reconnections, "");
    }
}

void StatisticsReport::PrintFileInfo() {
    const auto media_info = factory_.MakeMediaInfo();
    media_info->SetFileName(session_.g_objFSO->GetAbsolutePathName(settings_.input));
    pane_.OutputInfo(media_info->Description());
}

}  // namespace app
