// Progress and reports of the console's commands as JSON, one object a line.
#pragma once

#include <string>

#include "platform/exit_status.h"
#include "platform/form_events.h"
#include "platform/host/console_output.h"
#include "platform/run_report.h"

namespace platform::host {

/// Every object has "type" ("progress", "file", "report") and "command", the command's number from
/// 1 on. Bytes that are no UTF-8 come out as U+FFFD. Each line is written at once.
class JsonReport : public RunListener {
  public:
    explicit JsonReport(ConsoleOutput& output) : output_(output) {}

    void BeginCommand();
    void WriteProgress(const RunProgress& progress);
    /// Progress, but only when the encoder's state is not the one that was written last.
    void WriteState(const RunProgress& progress);
    void OnFileEnd(const FileReport& report) override;
    void WriteReport(const CommandReport& report, ExitStatus status);

  private:
    ConsoleOutput& output_;
    int command_ = 0;
    EncoderState state_ = EncoderState::Stopped;
};

/// The last object of a program that could not run any command: a report of refusal or failure.
void WriteJsonFailure(ConsoleOutput& output, const std::string& description, ExitStatus status);

}  // namespace platform::host
