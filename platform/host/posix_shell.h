// Starts programs directly, without a command interpreter between.
#pragma once

#include <string>
#include <vector>

#include "platform/host/path_names.h"
#include "platform/shell.h"

namespace platform::host {

/// Words at blanks; quotation marks hold blanks in a word and are taken away.
std::vector<std::string> SplitCommand(const std::string& command);

/// A program without a separator in its name is looked for in PATH; another is a name as the file
/// system takes them. Window styles mean nothing to the programs of this host.
class PosixShell : public Shell {
  public:
    explicit PosixShell(PathNames names);
    /// Also throws Error (invalid argument) for an empty command, (access denied) for a file that
    /// is no program. Without `wait`, how the program ends is not looked at.
    void Run(const std::string& command, WindowStyle style, bool wait) override;

  private:
    PathNames names_;
};

}  // namespace platform::host
