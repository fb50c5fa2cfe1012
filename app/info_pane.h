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
        scrollDisplay();
    }
    using OutputPane::OutputError;
    void OutputError(const std::string& text, const platform::ErrorReport& error) override {
        OutputInfo(text);
        if (on_error_) on_error_(error);
    }
    void scrollDisplay() { txtInfo_.ScrollToEnd(); }

    /// Called with each error that is written.
    void OnError(std::function<void(const platform::ErrorReport&)> handler) {
        on_error_ = std::move(handler);
    }

  private:
    platform::TextBox& txtInfo_;
    std::function<void(const platform::ErrorReport&)> on_error_;
};

}  // namespace app
