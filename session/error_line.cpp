#include "session/error_line.h"

#include <fmt/format.h>

namespace session {

void OutputErrorLine(platform::OutputPane& pane, const platform::ErrorReport& error) {
    pane.OutputError(fmt::format("Error: 0x{:X} - {}", error.number, error.description), error);
}

}  // namespace session
