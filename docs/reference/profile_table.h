// What each profile code asks of the encoder, read back from the encoder itself.
#pragma once

#include <string>

namespace reference {

/// A Markdown table, a row a code.
std::string ProfileTable();

}  // namespace reference
