// The command reference, made of the program's own tables so that it says what the program does.
#pragma once

#include <string>

namespace reference {

/// The whole document in Markdown. Throws std::runtime_error when an option has no note or a note
/// no option.
std::string CommandReference();

}  // namespace reference
