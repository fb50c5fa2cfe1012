// The console program as a test runs it, and the report that it prints.
#pragma once

#include <string>
#include <vector>

#include "support/commands.h"

namespace test_support {

/// Runs tessivo-console with these words.
CommandResult Console(const std::vector<std::string>& words,
                      const std::map<std::string, std::string>& environment = {});

/// The figure behind the `occurrence`-th line whose text begins with `label` (leading tabs are not
/// counted): digits without their commas. NaN when there is none.
double ReportFigure(const std::string& pane, const std::string& label, int occurrence = 0);

/// How often `part` stands in the text.
int CountOf(const std::string& text, const std::string& part);

/// A clip of moving frames (noise over a test pattern) and a tone, as AVI.
/// @param seconds  length; both streams have it to the frame
void MakeClip(const std::string& path, int seconds, const std::string& size = "320x240",
              int rate = 30);

}  // namespace test_support
