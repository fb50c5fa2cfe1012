// The one line that a failed operation gets in the output pane.
#pragma once

#include <cstdint>
#include <string>

namespace session {

/// "Error: 0x" with the number in upper-case hexadecimal, " - " and the description.
std::string ErrorLine(std::uint32_t number, const std::string& description);

}  // namespace session
