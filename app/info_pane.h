// The output pane over the window's txtInfo: only ever appended to, its newest line in view.
#pragma once

#include <string>

#include "platform/output_pane.h"
#include "platform/widgets.h"

namespace app {

/// User-interface thread. The text box must outlive the pane.
class InfoPane final : public platform::OutputPane {
  public:
    explicit InfoPane(platform::TextBox& txtInfo) : txtInfo_(txtInfo) {}

    void OutputInfo(const std::string& text) override {
        txtInfo_.AppendText(text + "\r\n");
        last_line_ = text;
        scrollDisplay();
    }
    void scrollDisplay() { txtInfo_.ScrollToEnd(); }

    /// "" before the first.
    const std::string& LastLine() const { return last_line_; }

  private:
    platform::TextBox& txtInfo_;
    std::string last_line_;
};

}  // namespace app
