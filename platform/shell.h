// Starting other programs the way the desktop does.
#pragma once

#include <string>

namespace platform {

enum class WindowStyle { Normal = 1, ShownWithoutFocus = 4 };

class Shell {
  public:
    virtual ~Shell() = default;
    /// Starts `command` (a program path and its arguments, quotation marks around those with
    /// blanks). Throws Error (file not found) when the program is not there. Returns at once
    /// unless `wait` is set.
    virtual void Run(const std::string& command, WindowStyle style, bool wait) = 0;
};

}  // namespace platform
