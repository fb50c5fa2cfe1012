#include "session/error_line.h"

#include <fmt/format.h>

namespace session {

std::string ErrorLine(std::uint32_t number, const std::string& description) {
    return fmt::format("Error: 0x{:X} - {}", number, description);
}

}  // namespace session
