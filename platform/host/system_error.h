// Errors of the system's calls as the platform's published numbers.
#pragma once

#include <string>

#include "platform/error.h"

namespace platform::host {

/// @param action  what failed with its name, for example "Cannot open the file /a/b.txt"
/// @param code    the call's errno
/// The description is the action, the reason and what to do about it.
Error SystemError(const std::string& action, int code);

}  // namespace platform::host
