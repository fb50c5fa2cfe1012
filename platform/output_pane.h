// The one way to the output pane.
#pragma once

#include <string>

namespace platform {

class OutputPane {
  public:
    virtual ~OutputPane() = default;
    /// Appends `text` and a line end to the pane and scrolls to its end. User-interface thread.
    virtual void OutputInfo(const std::string& text) = 0;
};

}  // namespace platform
