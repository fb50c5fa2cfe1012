// "--save-session FILE": a command that is set up like any other, but saved instead of run.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/info_pane.h"
#include "cli/encode_settings.h"
#include "platform/factory.h"
#include "platform/session_state.h"
#include "platform/widgets.h"

namespace app {

inline constexpr std::string_view kSaveSessionWord = "--save-session";

/// Saves the session of a command; settings, profile and running encoder of the form stay as they
/// are, and nothing but the file is written. False, after one line, when the command or the file is
/// refused. Throws platform::Error where the command itself would end in one.
/// @param words     the file's name and the words of the command
/// @param settings  those that the command would start from, as is the session
bool SaveSession(const std::vector<std::string>& words, platform::FormWindow& window,
                 platform::Factory& factory, InfoPane& pane, const cli::EncodeSettings& settings,
                 const platform::SessionState& session);

}  // namespace app
