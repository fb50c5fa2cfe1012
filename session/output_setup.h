// Where the session's output goes, which part of the sources it holds and what it says of itself.
#pragma once

#include "cli/encode_settings.h"
#include "platform/output_pane.h"
#include "platform/session_state.h"

namespace session {

/// Each procedure: true = go on; false after its one line. Errors of the encoder and of the file
/// system pass through.
class OutputSetup {
  public:
    OutputSetup(platform::SessionState& state, cli::EncodeSettings& settings,
                platform::OutputPane& pane);

    /// Completes the -output setting in place (a folder gets a file name, a name without extension
    /// gets "wmv" or "wma" by the source group's kinds), makes its folder, and configures
    /// broadcasting and push distribution.
    bool SetupOutput();

    /// Sets the marks of -time on the sources; refuses a device capture without a duration.
    bool SetupTime();

    /// Writes the title fields and the fold-down coefficients, these negated.
    bool SetupDisplayInfo();

  private:
    void SetupOutputFile();

    platform::SessionState& state_;
    cli::EncodeSettings& settings_;
    platform::OutputPane& pane_;
};

}  // namespace session
