// Errors of the system's calls as the platform's published numbers.
#pragma once

#include <span>
#include <string>

#include "platform/error.h"

namespace platform {

/// What an errno means.
struct SystemErrorRow {
    int code;
    ErrorNumber number;
    const char* reason;
    const char* advice;
};

struct SystemCause {
    ErrorNumber number;
    std::string reason;
    std::string advice;        // "" where there is none
    std::string Text() const;  // "reason; advice"
};
/// @param here  what the codes mean in a place that knows more of what failed; all others mean what
///              they do everywhere
SystemCause CauseOf(int code, std::span<const SystemErrorRow> here = {});

/// @param action  what failed with its name, for example "Cannot open the file /a/b.txt"
/// @param code    the call's errno
/// The description is the action, the reason and what to do about it.
Error SystemError(const std::string& action, int code);

}  // namespace platform
