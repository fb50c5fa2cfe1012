// FFmpeg's error codes as the platform's errors.
#pragma once

#include <string>

#include "platform/error.h"

namespace engine {

/// `subject` names what failed (a file, an encoder); FFmpeg's own text follows it.
platform::Error AvError(int code, const std::string& subject);

/// Throws AvError when `code` is negative; returns it otherwise.
int CheckAv(int code, const std::string& subject);

}  // namespace engine
