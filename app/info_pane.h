// The output pane over the window's txtInfo: only ever appended to, its newest line in view.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "platform/output_pane.h"
#include "platform/widgets.h"

namespace app {

/// User-interface thread. The text box must outlive the pane.
class InfoPane final : public platform::OutputPane {
  public:
    explicit InfoPane(platform::TextBox& txtInfo) : txtInfo_(txtInfo) {}

    void OutputInfo(const std::string& text) override {
        txtInfo_.AppendText(text + "\r\n");
        if (on_line_) on_line_(text);
        scrollDisplay();
    }
    void scrollDisplay() { txtInfo_.ScrollToEnd(); }

    /// Called with each text that is written.
    void OnLine(std::function<void(const std::string&)> handler) { on_line_ = std::move(handler); }

  private:
    platform::TextBox& txtInfo_;
    std::function<void(const std::string&)> on_line_;
};

}  // namespace app
