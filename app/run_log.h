// What came of a command and of its files, kept as values for hosts that report them to programs.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "app/statistics_report.h"
#include "cli/encode_settings.h"
#include "platform/exit_status.h"
#include "platform/run_report.h"
#include "platform/session_state.h"

namespace app {

/// How an encoding ended.
struct RunEnd {
    WallTime start;
    WallTime end;
    bool failed = false;
    platform::ErrorReport error;  // when it failed
};

/// User-interface thread; what is handed over must outlive the object.
class RunLog {
  public:
    RunLog(const platform::SessionState& session, const cli::EncodeSettings& settings)
        : session_(session), settings_(settings) {}

    void SetListener(platform::RunListener* listener) { listener_ = listener; }

    void BeginCommand();
    /// The pane has got a line about this error.
    void NoteError(const platform::ErrorReport& error);
    void NoteStop() { stopped_ = true; }
    void NoteCarriedOver(std::vector<std::string> options) {
        command_.carried_over = std::move(options);
    }
    /// Kept for the report and told to the listener, once a command.
    void TellNotice(const std::string& text);
    void NoteHint(std::string hint) { command_.hint = std::move(hint); }

    /// Where the session's encoder writes to; "" when to no file.
    std::string OutputPath() const;
    /// The session's run has come to its stopped state.
    void EndRun(const RunEnd& end);

    // A folder's files, one after the other. Their ends are told to the listener; a file without a
    // run of its own was refused by the last error that it had.
    void BeginFolder() { command_.is_folder = true; }
    bool IsOfFolder() const { return command_.is_folder; }
    void BeginFile();
    void EndFile();
    /// Of a folder that was walked; tells the summary as a notice.
    void EndWalk(std::map<std::string, int> skipped);

    // For the listener.
    void TellState(platform::EncoderState state) const;
    /// A command has ended before anything was encoded.
    void RefuseCommand(platform::ExitStatus status) const;
    /// A command that encoded something is over.
    void EndCommand(platform::ExitStatus status) const;

    /// @param status  as the form's
    platform::CommandReport Report(platform::ExitStatus status) const;

  private:
    void ReadTotals(platform::FileReport& report) const;

    const platform::SessionState& session_;
    const cli::EncodeSettings& settings_;
    platform::RunListener* listener_ = nullptr;
    platform::CommandReport command_;
    bool has_run_ = false;  // command_.last is of the file at hand
    bool in_file_ = false;  // of a folder
    bool stopped_ = false;
    platform::ErrorReport last_error_;  // of the command, or of the folder's file at hand
};

}  // namespace app
