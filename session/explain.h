// A session that was set up, as text: a line a property, for people and for diff.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <string_view>

#include "cli/encode_settings.h"
#include "platform/encoder.h"
#include "platform/output_pane.h"
#include "platform/session_state.h"

namespace session {

/// Tells what the command at hand said from what earlier ones left behind.
struct CommandOrigin {
    /// The settings as they stood before the command.
    cli::EncodeSettings before;
    /// Names of the options that stood in the command or its configuration files, in lower case.
    std::set<std::string_view> typed;
    /// What the command makes of a new profile; null when it has no profile of earlier commands.
    std::shared_ptr<platform::WMEncProfile2> fresh_profile = nullptr;
};

/// Writes "object.property = value" lines about the session's sources, profile and encoder, always
/// in the same order. A source's property is left out while it is as nobody set it; what
/// the streams are encoded to is written whole. A value that an earlier command's option decides,
/// and a mode that is in the profile since then, ends in " (carried over)". Control characters are
/// written as C escapes, so that a value keeps to its line. Needs the session as EncoderSetup
/// leaves it; errors of the encoder pass through.
void ExplainSession(const platform::SessionState& state, const CommandOrigin& origin,
                    platform::OutputPane& pane);

/// One such line by itself.
std::string ExplainLine(std::string_view name, std::string_view value);

}  // namespace session
