// What an executable says about itself.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace platform::host {

struct ProgramInfo {
    std::string name;
    std::string version;
    bool has_window = false;
};

/// How to call the program: the console's or the window's few lines.
std::string UsageText(const ProgramInfo& program);

/// The answer to "--version" or "--help" when that is the only word; nothing for commands.
std::optional<std::string> AnswerAboutProgram(const ProgramInfo& program,
                                              const std::vector<std::string>& words);

/// The words joined by single blanks.
std::string JoinWords(const std::vector<std::string>& words);

}  // namespace platform::host
