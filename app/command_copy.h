// A command that is set up aside: on copies, so that it means the same afterwards as before.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "app/form_actions.h"
#include "app/info_pane.h"
#include "app/statistics_report.h"
#include "cli/encode_settings.h"
#include "cli/parameter_parser.h"
#include "cli/value_readers.h"
#include "platform/factory.h"
#include "platform/session_state.h"
#include "platform/widgets.h"
#include "session/read_only_files.h"

namespace app {

/// Settings, profile and running encoder of the form stay as they are, and nothing is written but
/// to the pane. Where the command itself would write, `files` notes what. User-interface thread.
class CommandCopy {
  public:
    /// Settings and session are those that the command would start from.
    CommandCopy(platform::FormWindow& window, platform::Factory& factory, InfoPane& pane,
                const cli::EncodeSettings& settings, const platform::SessionState& session);

    /// As ParameterParser: false when the command was refused, or only listed or showed.
    bool Parse(const std::vector<std::string>& words) { return parser.ParseParameters(words); }

    cli::EncodeSettings before;
    cli::EncodeSettings settings;
    platform::SessionState session;
    std::shared_ptr<session::ReadOnlyFiles> files;

  private:
    StatisticsReport report_;
    FormActions actions_;
    cli::ValueReaders readers_;

  public:
    cli::ParameterParser parser;
};

}  // namespace app
