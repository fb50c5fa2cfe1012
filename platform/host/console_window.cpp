#include "platform/host/console_window.h"

#include <algorithm>

#include "platform/text.h"

namespace platform::host {

namespace {

constexpr std::size_t kBarWidth = 16;  // characters; the whole line then fits into 80

std::string Bar(const ProgressBar& bar) {
    const float range = bar.Max() - bar.Min();
    const float part = range > 0 ? std::clamp((bar.Value() - bar.Min()) / range, 0.0F, 1.0F) : 0;
    const auto filled = static_cast<std::size_t>(part * static_cast<float>(kBarWidth));
    return "[" + PadSpaces(std::string(filled, '#'), kBarWidth) + "]";
}

/// A caption of two lines as a part of one.
std::string OnOneLine(const std::string& caption) {
    std::string line;
    for (const std::string& piece : Split(caption, '\n')) {
        std::string_view part(piece);
        if (!part.empty() && part.back() == '\r') part.remove_suffix(1);
        if (!line.empty() && line.back() != ' ') line.push_back(' ');
        line.append(part);
    }
    return TrimBlanks(line);
}

}  // namespace

void ConsolePane::SetText(const std::string& text) {
    if (StartsWith(text, text_)) {
        output_.WriteText(std::string_view(text).substr(text_.size()));
    } else {
        output_.FlushText();
        output_.WriteText(text);
    }
    text_ = text;
}

void ConsolePane::AppendText(const std::string& text) {
    text_ += text;
    output_.WriteText(text);
}

ConsoleWindow::ConsoleWindow(ConsoleOutput& output, std::string arguments)
    : output_(output),
      arguments_(std::move(arguments)),
      pane_(output),
      status_([this] { output_.WriteNote(status_.Caption()); }) {
    loop_.OnIdle([this] {
        const bool ticked = std::exchange(ticked_, false);
        if (!loop_.Timer1().Enabled()) {
            output_.ShowProgress("");
        } else if (ticked) {
            output_.ShowProgress(ProgressLine());
        }
        if (on_idle_) on_idle_(ticked);
    });
}

void ConsoleWindow::SetForm(FormEvents& form) {
    loop_.OnTick([this, &form] {
        form.Timer1_Timer();
        time_left_ = left_.TextOf(form.Progress(), TimeLeft::Clock::now());
        ticked_ = true;
    });
}

void ConsoleWindow::MessageBox(const std::string& text, const std::string& title,
                               MessageIcon /*icon*/) {
    output_.WriteNote(title);
    output_.WriteNote(text);
}

std::string ConsoleWindow::ProgressLine() const {
    std::string line = Bar(bar_);
    for (const Label* label :
         std::initializer_list<const Label*>{&percent_, &elapsed_, &current_rate_}) {
        const std::string text = OnOneLine(label->Caption());
        if (!text.empty()) line += "  " + text;
    }
    if (!time_left_.empty()) line += "  " + time_left_;
    return line;
}

}  // namespace platform::host
