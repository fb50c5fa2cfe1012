// "--repair FILE" of the console executable, from its words to its exit status.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/host/console_program.h"

namespace platform::host {

/// Makes a file whole that was cut off; returns lines for people. Throws platform::Error.
using Repairer = std::function<std::string(const std::string& path)>;

/// Repairs the file when the words ask for it ("--json" may stand before "--repair"), else returns
/// nothing. The exit status: 1 when there is nothing to repair the file from or none is named, 2
/// when the repair itself failed; the file is then as it was.
std::optional<int> RunRepair(const std::vector<std::string>& words, const Repairer& repair,
                             ConsoleStreams streams = {});

}  // namespace platform::host
