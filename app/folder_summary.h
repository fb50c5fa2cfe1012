// What came of a folder, in a sentence or two.
#pragma once

#include <string>

#include "platform/run_report.h"

namespace app {

/// How many files were encoded, failed and were left out; names what a recipe has a way for.
std::string FolderSummary(const platform::CommandReport& report);

}  // namespace app
