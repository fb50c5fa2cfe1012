// "--explain": a command that is set up like any other, but printed instead of run.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/folder_run.h"
#include "app/info_pane.h"
#include "cli/encode_settings.h"
#include "platform/factory.h"
#include "platform/session_state.h"
#include "platform/widgets.h"

namespace app {

inline constexpr std::string_view kExplainWord = "--explain";

/// A command means the same after its explanation as before. Writes to the pane only; where the
/// command itself would write, the explanation says what. User-interface thread. What it is given
/// must outlive it.
class ExplainCommand {
  public:
    /// Settings and session are those that the command would start from.
    ExplainCommand(platform::FormWindow& window, platform::Factory& factory, InfoPane& pane,
                   FolderRun& folder_run, const cli::EncodeSettings& settings,
                   const platform::SessionState& session)
        : window_(window),
          factory_(factory),
          pane_(pane),
          folder_run_(folder_run),
          settings_(settings),
          session_(session) {}

    /// A folder is walked as one that is encoded, its files explained one after the other; what
    /// stands alone in a command (a listing, the description of a file) is shown. False when the
    /// command would be refused or, of a folder, any file. Throws platform::Error where the command
    /// itself would end in one.
    bool Explain(const std::vector<std::string>& words);

  private:
    platform::FormWindow& window_;
    platform::Factory& factory_;
    InfoPane& pane_;
    FolderRun& folder_run_;
    const cli::EncodeSettings& settings_;
    const platform::SessionState& session_;
};

}  // namespace app
