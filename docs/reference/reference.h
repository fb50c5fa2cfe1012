// The command reference, made of the program's own tables so that it says what the program does.
#pragma once

#include <string>

namespace reference {

/// The whole document in Markdown. Throws std::runtime_error when the help names a profile that
/// does not exist.
std::string CommandReference();

/// Whether a number of -v_preproc is carried out with every codec.
bool FilterWorksToday(int number);

}  // namespace reference
