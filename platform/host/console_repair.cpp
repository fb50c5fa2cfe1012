#include "platform/host/console_repair.h"

#include <exception>

#include "platform/error.h"
#include "platform/host/console_output.h"
#include "platform/host/json_report.h"
#include "platform/host/path_names.h"
#include "platform/host/stop_signals.h"
#include "platform/posix/file_descriptor.h"

namespace platform::host {

namespace {

constexpr const char* kRepairWord = "--repair";
constexpr const char* kJsonWord = "--json";

ExitStatus StatusOf(const Error& error) {
    const bool in_writing =
        error.unsigned_number() == kDiskFull || error.unsigned_number() == kUnspecified;
    return in_writing ? ExitStatus::Failed : ExitStatus::Refused;
}

}  // namespace

std::optional<int> RunRepair(const std::vector<std::string>& words, const Repairer& repair,
                             ConsoleStreams streams) {
    const bool json = !words.empty() && words.front() == kJsonWord;
    const std::vector<std::string> rest(words.begin() + (json ? 1 : 0), words.end());
    if (rest.empty() || rest.front() != kRepairWord) return std::nullopt;

    OccupyStandardDescriptors();
    LetWritesFail();
    ConsoleOutput output(json ? streams.notes : streams.output, streams.notes);
    CommandReport report;
    report.last.end = CommandEnd::Completed;
    ExitStatus status = ExitStatus::Done;
    try {
        if (rest.size() != 2)
            throw Error(kInvalidArgument, "--repair takes the name of one file and nothing else");
        report.last.input = rest[1];
        output.WriteText(repair(PathNames::OfUser().AbsolutePath(rest[1])));
    } catch (const Error& error) {
        output.WriteNote("tessivo-console: " + error.description());
        status = StatusOf(error);
        report.last.end = status == ExitStatus::Failed ? CommandEnd::Failed : CommandEnd::Refused;
        report.last.error = ErrorReport{error.unsigned_number(), error.description()};
    } catch (const std::exception& error) {
        output.WriteNote(std::string("tessivo-console: ") + error.what());
        status = ExitStatus::Failed;
        report.last.end = CommandEnd::Failed;
        report.last.error = ErrorReport{0, error.what()};
    }
    if (!json) return Number(output.TextLost() ? ExitStatus::Failed : status);
    ConsoleOutput results(streams.output, streams.notes);
    JsonReport(results).WriteReport(report, status);
    return Number(results.TextLost() ? ExitStatus::Failed : status);
}

}  // namespace platform::host
