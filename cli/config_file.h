// Configuration files: one line of text that holds the words of a command.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "cli/command_actions.h"
#include "platform/file_system.h"
#include "platform/output_pane.h"

namespace cli {

/// The words of the file's first line; further lines are ignored. No extension is added to `name`.
/// Nothing, after one line on the pane, when there are only blanks. Throws platform::Error when the
/// file cannot be opened or has no line at all.
std::optional<std::vector<std::string>> ReadConfigFile(platform::FileSystem& files,
                                                       platform::OutputPane& pane,
                                                       const std::string& name);

/// Writes `text` as the file's whole content, without a line end. A name that does not end in
/// ".weu" (in any case) gets it; the folder is made when it is missing. False, after one line on
/// the pane, when that file is one of the `inputs`. Throws platform::Error.
bool WriteConfigFile(platform::FileSystem& files, platform::OutputPane& pane,
                     CommandActions& actions, const std::string& name, const std::string& text,
                     std::span<const std::string> inputs);

}  // namespace cli
