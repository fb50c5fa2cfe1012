// The reference of all options, as the pane prints it, and the way to the help viewer.
#pragma once

#include <string_view>
#include <vector>

#include "platform/file_system.h"
#include "platform/output_pane.h"
#include "platform/shell.h"

namespace cli {

/// The lines in the order in which they print; separators are empty.
std::vector<std::string_view> HelpLines();

void ShowHelp(platform::OutputPane& pane);

/// Starts the system's viewer on the encoder's help file without waiting for it. Checks nothing:
/// what is missing is the shell's to report (platform::Error).
void ShowHelpChm(platform::FileSystem& files, platform::Shell& shell);

}  // namespace cli
