// The form's window where there is no display: its pane, status and progress on a terminal.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "platform/form_events.h"
#include "platform/host/console_credentials.h"
#include "platform/host/console_loop.h"
#include "platform/host/console_output.h"
#include "platform/host/time_left.h"
#include "platform/widgets.h"

namespace platform::host {

/// A control that only remembers its caption and says when it changes.
template <typename Control>
class ConsoleCaption : public Control {
  public:
    explicit ConsoleCaption(std::function<void()> on_change = {})
        : on_change_(std::move(on_change)) {}
    std::string Caption() const override { return caption_; }
    void SetCaption(const std::string& caption) override {
        if (caption == caption_) return;
        caption_ = caption;
        if (on_change_) on_change_();
    }

  private:
    std::string caption_;
    std::function<void()> on_change_;
};

class ConsoleCommand : public TextBox {
  public:
    std::string Text() const override { return text_; }
    void SetText(const std::string& text) override { text_ = text; }
    void AppendText(const std::string& text) override { text_ += text; }
    void ScrollToEnd() override {}

  private:
    std::string text_;
};

/// What is appended is written at once. A text that replaces another is written as a whole.
class ConsolePane : public TextBox {
  public:
    explicit ConsolePane(ConsoleOutput& output) : output_(output) {}
    std::string Text() const override { return text_; }
    void SetText(const std::string& text) override;
    void AppendText(const std::string& text) override;
    void ScrollToEnd() override {}

  private:
    ConsoleOutput& output_;
    std::string text_;
};

class ConsoleBar : public ProgressBar {
  public:
    float Min() const override { return min_; }
    void SetMin(float minimum) override { min_ = minimum; }
    float Max() const override { return max_; }
    void SetMax(float maximum) override { max_ = maximum; }
    float Value() const override { return value_; }
    void SetValue(float value) override { value_ = value; }

  private:
    float min_ = 0;
    float max_ = 100;
    float value_ = 0;
};

/// While the timer runs and after it has ticked, a progress line stands on the notes' terminal.
class ConsoleWindow : public FormWindow {
  public:
    /// @param arguments  the process's arguments after the program's name, joined by blanks
    ConsoleWindow(ConsoleOutput& output, std::string arguments);

    /// The form must live as long as the loop runs.
    void SetForm(FormEvents& form);
    /// Where a person may be asked, if it is a terminal. It stays the caller's.
    void SetInput(int input) { input_ = input; }

    TextBox& txtCmd() override { return command_; }
    TextBox& txtInfo() override { return pane_; }
    Button& cmdGo() override { return go_; }
    Button& cmdStop() override { return stop_; }
    ProgressBar& pb1() override { return bar_; }
    Label& lblStatus() override { return status_; }
    Label& lblFile() override { return file_; }
    Label& lblETm() override { return length_; }
    Label& lblprgs() override { return percent_; }
    Label& Label1() override { return elapsed_; }
    Label& Label2() override { return expected_rate_; }
    Label& Label3() override { return current_rate_; }
    Timer& Timer1() override { return loop_.Timer1(); }

    void SetCaption(const std::string& /*caption*/) override {}
    void SetMousePointer(MousePointer /*pointer*/) override {}
    void Beep() override { output_.Beep(); }
    /// Does not wait: nobody may be there to answer.
    void MessageBox(const std::string& text, const std::string& title, MessageIcon icon) override;
    std::string Arguments() const override { return arguments_; }
    EventLoop& Loop() override { return loop_; }
    CredentialsAnswer AskCredentials(const CredentialsQuestion& question) override {
        output_.FlushText();
        return AskOnTerminal(loop_, input_, question);
    }

    ConsoleLoop& Console() { return loop_; }
    /// Called when there is nothing more to do for now, with whether the timer has ticked since.
    void OnIdle(std::function<void(bool ticked)> handler) { on_idle_ = std::move(handler); }

  private:
    std::string ProgressLine() const;

    TimeLeft left_;
    std::string time_left_;  // of the run, as the last tick saw it
    ConsoleOutput& output_;
    std::string arguments_;
    ConsoleLoop loop_;
    int input_ = -1;
    bool ticked_ = false;  // since there was nothing to do
    std::function<void(bool)> on_idle_;
    ConsoleCommand command_;
    ConsolePane pane_;
    ConsoleBar bar_;
    ConsoleCaption<Button> go_;
    ConsoleCaption<Button> stop_;
    ConsoleCaption<Label> status_;
    ConsoleCaption<Label> file_;
    ConsoleCaption<Label> length_;
    ConsoleCaption<Label> percent_;
    ConsoleCaption<Label> elapsed_;
    ConsoleCaption<Label> expected_rate_;
    ConsoleCaption<Label> current_rate_;
};

}  // namespace platform::host
