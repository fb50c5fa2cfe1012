// Errors of the system's calls as the platform's published numbers.
#pragma once

#include <string>

#include "platform/error.h"

namespace platform {

/// What an errno means wherever nothing more is known of what failed.
struct SystemCause {
    ErrorNumber number;
    std::string reason;
    std::string advice;  // "" where there is none
};
SystemCause CauseOf(int code);

/// @param action  what failed with its name, for example "Cannot open the file /a/b.txt"
/// @param code    the call's errno
/// The description is the action, the reason and what to do about it.
Error SystemError(const std::string& action, int code);

}  // namespace platform
