// The one line that a failed operation gets in the output pane.
#pragma once

#include "platform/output_pane.h"

namespace session {

/// "Error: 0x" with the number in upper-case hexadecimal, " - " and the description.
void OutputErrorLine(platform::OutputPane& pane, const platform::ErrorReport& error);

}  // namespace session
