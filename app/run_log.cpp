#include "app/run_log.h"

#include <fmt/format.h>

#include <charconv>
#include <string_view>

#include "platform/error.h"
#include "platform/text.h"

namespace app {

namespace {

using platform::CommandEnd;
using platform::SourceType;

constexpr int kRefusedStatus = 1;
constexpr std::string_view kWalkHeading = "============== ";
constexpr std::string_view kPassedOver = "Skipping: ";
constexpr std::string_view kWrittenBefore = ", since this walk has already written ";

bool IsOfWalk(const std::string& line) {
    if (platform::StartsWith(line, kWalkHeading)) return true;
    return platform::StartsWith(line, kPassedOver) &&
           line.find(kWrittenBefore) == std::string::npos;
}

struct NumberedLine {
    std::string_view prefix;
    int base;
    std::string_view separator;  // between number and description
};

// clang-format off
constexpr NumberedLine kNumberedLines[] = {
    // prefix                                base  separator
    {"Error: 0x",                            16,   " - "},
    {"Invalid profile: 0x",                  16,   " "},
    {"Prepare to encode failed with error ", 10,   " "},
    {"Start encoder failed with error ",     10,   " "},
};
// clang-format on

platform::StreamReport Stream(platform::WMEncStatistics& statistics, SourceType type,
                              const std::string& codec) {
    return {codec, statistics.StreamOutputStats(type, 0, 0)};
}

}  // namespace

platform::ErrorReport ErrorOfLine(const std::string& line) {
    for (const NumberedLine& form : kNumberedLines) {
        if (!platform::StartsWith(line, form.prefix)) continue;
        const std::string_view rest = std::string_view(line).substr(form.prefix.size());
        std::int64_t number = 0;  // both the signed and the unsigned form of 32 bits
        const char* const end = rest.data() + rest.size();
        const auto [after, error] = std::from_chars(rest.data(), end, number, form.base);
        std::string_view text = rest.substr(static_cast<std::size_t>(after - rest.data()));
        if (error != std::errc() || !platform::StartsWith(text, form.separator)) continue;
        text.remove_prefix(form.separator.size());
        return {static_cast<std::uint32_t>(number), std::string(text)};
    }
    return {0, line};
}

void RunLog::BeginCommand() {
    command_ = {};
    has_run_ = false;
    in_file_ = false;
    stopped_ = false;
    last_line_.clear();
}

void RunLog::NoteLine(const std::string& line) {
    last_line_ = line;
    if (IsOfWalk(line)) hears_file_ = false;
    if (hears_file_) file_line_ = line;
}

void RunLog::EndRun(const RunEnd& end) {
    platform::FileReport& report = command_.last;
    report = {};
    has_run_ = true;
    report.end = end.failed ? CommandEnd::Failed
                 : stopped_ ? CommandEnd::Stopped
                            : CommandEnd::Completed;
    report.input = settings_.input;
    using std::chrono::floor;
    using std::chrono::seconds;
    report.seconds = (floor<seconds>(end.end) - floor<seconds>(end.start)).count();
    if (end.failed) report.error = end.error;
    ReadTotals(report);
}

void RunLog::ReadTotals(platform::FileReport& report) const {
    // What cannot be read is left out; the run's own report has said so.
    platform::ErrorTrap trap;
    platform::WMEncStatistics& statistics = session_.g_objEncoder->Statistics();
    trap([&] {
        const std::string output = session_.g_objEncoder->File().LocalFileName();
        if (!output.empty()) report.output = session_.g_objFSO->GetAbsolutePathName(output);
    });
    if (session_.g_objSrcAud)
        trap(
            [&] { report.audio = Stream(statistics, SourceType::Audio, session_.AudioCodecName); });
    if (session_.g_objSrcVid)
        trap(
            [&] { report.video = Stream(statistics, SourceType::Video, session_.VideoCodecName); });
    trap([&] { report.average_bit_rate_bps = statistics.WMFOutputStats().average_bit_rate_bps; });
    if (!report.output.empty()) trap([&] { report.file = statistics.FileArchiveStats(); });
}

void RunLog::BeginFile() {
    has_run_ = false;
    in_file_ = true;
    hears_file_ = true;
    file_input_ = settings_.input;
    file_line_.clear();
}

void RunLog::EndFile() {
    if (!in_file_) return;
    in_file_ = false;
    if (!has_run_) {
        command_.last = {};
        const bool passed_over = platform::StartsWith(file_line_, kPassedOver);
        command_.last.end = passed_over ? CommandEnd::Shown : CommandEnd::Refused;
        command_.last.input = file_input_;
        command_.last.error = ErrorOfLine(file_line_);
    }
    const CommandEnd end = command_.last.end;
    const bool failed = end == CommandEnd::Failed || end == CommandEnd::Refused;
    if (end != CommandEnd::Shown) ++(failed ? command_.files_failed : command_.files_completed);
    if (listener_ != nullptr) listener_->OnFileEnd(command_.last);
}

void RunLog::TellState(platform::EncoderState state) const {
    if (listener_ != nullptr) listener_->OnStateChange(state);
}

void RunLog::EndCommand(int exit_status) const {
    if (listener_ != nullptr) listener_->OnCommandEnd(Report(exit_status));
}

platform::CommandReport RunLog::Report(int exit_status) const {
    platform::CommandReport report = command_;
    platform::FileReport& last = report.last;
    const CommandEnd bad = exit_status == kRefusedStatus ? CommandEnd::Refused : CommandEnd::Failed;
    if (report.is_folder) {
        last = {};
        last.end = stopped_ ? CommandEnd::Stopped : CommandEnd::Completed;
        if (exit_status == 0) return report;
        last.end = bad;
        const int files = report.files_completed + report.files_failed;
        last.error = bad == CommandEnd::Refused
                         ? ErrorOfLine(last_line_)
                         : platform::ErrorReport{
                               0, fmt::format("{} of {} files failed", report.files_failed, files)};
    } else if (!has_run_) {
        last.input = settings_.input;
        if (exit_status == 0) return report;
        last.end = bad;
        last.error = ErrorOfLine(last_line_);
    }
    return report;
}

}  // namespace app
