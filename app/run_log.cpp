#include "app/run_log.h"

#include <fmt/format.h>

#include <algorithm>

#include "app/folder_summary.h"
#include "platform/error.h"

namespace app {

namespace {

using platform::CommandEnd;
using platform::ExitStatus;
using platform::SourceType;

platform::StreamReport Stream(platform::WMEncStatistics& statistics, SourceType type,
                              const std::string& codec) {
    return {codec, statistics.StreamOutputStats(type, 0, 0)};
}

}  // namespace

void RunLog::BeginCommand() {
    command_ = {};
    has_run_ = false;
    in_file_ = false;
    stopped_ = false;
    last_error_ = {};
}

void RunLog::NoteError(const platform::ErrorReport& error) { last_error_ = error; }

void RunLog::TellNotice(const std::string& text) {
    std::vector<std::string>& told = command_.notices;
    if (std::find(told.begin(), told.end(), text) != told.end()) return;
    told.push_back(text);
    if (listener_ != nullptr) listener_->OnNotice(text);
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

std::string RunLog::OutputPath() const {
    platform::ErrorTrap trap;
    std::string path;
    trap([&] {
        const std::string output = session_.g_objEncoder->File().LocalFileName();
        if (!output.empty()) path = session_.g_objFSO->GetAbsolutePathName(output);
    });
    return path;
}

void RunLog::ReadTotals(platform::FileReport& report) const {
    // What cannot be read is left out; the run's own report has said so.
    platform::ErrorTrap trap;
    platform::WMEncStatistics& statistics = session_.g_objEncoder->Statistics();
    report.output = OutputPath();
    if (session_.g_objSrcAud)
        trap(
            [&] { report.audio = Stream(statistics, SourceType::Audio, session_.AudioCodecName); });
    if (session_.g_objSrcVid)
        trap(
            [&] { report.video = Stream(statistics, SourceType::Video, session_.VideoCodecName); });
    trap([&] { report.average_bit_rate_bps = statistics.WMFOutputStats().average_bit_rate_bps; });
    trap([&] { report.network = statistics.NetworkStats(); });
    if (!report.output.empty()) trap([&] { report.file = statistics.FileArchiveStats(); });
}

void RunLog::BeginFile() {
    has_run_ = false;
    in_file_ = true;
    last_error_ = {};
    command_.last = {};
    command_.last.end = CommandEnd::Refused;
    command_.last.input = settings_.input;
}

void RunLog::EndFile() {
    if (!in_file_) return;
    in_file_ = false;
    if (command_.last.end == CommandEnd::Refused) command_.last.error = last_error_;
    ++(platform::IsFailure(command_.last.end) ? command_.files_failed : command_.files_completed);
    if (listener_ != nullptr) listener_->OnFileEnd(command_.last);
}

void RunLog::EndWalk(std::map<std::string, int> skipped) {
    command_.files_skipped = std::move(skipped);
    TellNotice(FolderSummary(command_));
}

void RunLog::TellState(platform::EncoderState state) const {
    if (listener_ != nullptr) listener_->OnStateChange(state);
}

void RunLog::RefuseCommand(ExitStatus status) const {
    if (listener_ != nullptr) listener_->OnCommandRefused(Report(status));
}

void RunLog::EndCommand(ExitStatus status) const {
    if (listener_ != nullptr) listener_->OnCommandEnd(Report(status));
}

platform::CommandReport RunLog::Report(ExitStatus status) const {
    platform::CommandReport report = command_;
    platform::FileReport& last = report.last;
    const CommandEnd bad = status == ExitStatus::Refused ? CommandEnd::Refused : CommandEnd::Failed;
    if (report.is_folder) {
        last = {};
        last.end = stopped_ ? CommandEnd::Stopped : CommandEnd::Completed;
        if (status == ExitStatus::Done) return report;
        last.end = bad;
        const int files = report.files_completed + report.files_failed;
        last.error = bad == CommandEnd::Refused
                         ? last_error_
                         : platform::ErrorReport{
                               0, fmt::format("{} of {} files failed", report.files_failed, files)};
    } else if (!has_run_) {
        last.input = settings_.input;
        if (status == ExitStatus::Done) return report;
        last.end = bad;
        last.error = last_error_;
    }
    return report;
}

}  // namespace app
