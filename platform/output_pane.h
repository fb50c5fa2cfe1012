// The one way to the output pane.
#pragma once

#include <string>

#include "platform/error.h"

namespace platform {

/// User-interface thread.
class OutputPane {
  public:
    virtual ~OutputPane() = default;
    /// Appends `text` and a line end to the pane and scrolls to its end.
    virtual void OutputInfo(const std::string& text) = 0;
    /// OutputInfo for a line that says an error, with the same error as values for whoever tells
    /// it to programs.
    virtual void OutputError(const std::string& text, const ErrorReport& /*error*/) {
        OutputInfo(text);
    }
    /// The error has no number, and the line is all that is to be said of it.
    void OutputError(const std::string& text) { OutputError(text, {0, text}); }
};

}  // namespace platform
