// A window without a display: its controls remember and note what they are told, its loop runs
// what was posted.
#pragma once

#include <deque>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "platform/text.h"
#include "platform/widgets.h"
#include "support/fake_property.h"

namespace test_support {

/// Runs what was posted; when nothing is left but the condition does not hold, asks `on_idle` (the
/// user of the test) to do something.
class FakeEventLoop : public platform::EventLoop {
  public:
    void Post(std::function<void()> task) override { tasks.push_back(std::move(task)); }
    void RunUntil(const std::function<bool()>& done) override {
        while (!done()) {
            if (!tasks.empty()) {
                RunOne();
            } else if (on_idle) {
                on_idle();
            } else {
                throw std::logic_error("the loop would wait for ever");
            }
        }
    }
    void RunAll() {
        while (!tasks.empty()) RunOne();
    }

    std::deque<std::function<void()>> tasks;
    std::function<void()> on_idle;

  private:
    void RunOne() {
        const std::function<void()> task = std::move(tasks.front());
        tasks.pop_front();
        task();
    }
};

class FakeTextBox : public platform::TextBox {
  public:
    std::string Text() const override { return text; }
    void SetText(const std::string& new_text) override {
        text = new_text;
        scrolled = false;
    }
    void AppendText(const std::string& more) override {
        text += more;
        scrolled = false;
    }
    void ScrollToEnd() override { scrolled = true; }
    std::string text;
    bool scrolled = false;  // the end is in view
};

/// Notes each change in the window's log as "lblStatus=text".
template <typename Base>
class FakeCaption : public Base {
  public:
    FakeCaption(CallLogPtr shared_log, std::string control_name)
        : log(std::move(shared_log)), name(std::move(control_name)) {}
    std::string Caption() const override { return caption; }
    void SetCaption(const std::string& new_caption) override {
        log->Call(name, "=" + new_caption);
        caption = new_caption;
    }
    CallLogPtr log;
    std::string name, caption;
};

class FakeProgressBar : public platform::ProgressBar {
  public:
    explicit FakeProgressBar(CallLogPtr shared_log) : log(std::move(shared_log)) {}
    float Min() const override { return minimum; }
    void SetMin(float value) override { minimum = value; }
    float Max() const override { return maximum; }
    void SetMax(float value) override { maximum = value; }
    float Value() const override { return current; }
    void SetValue(float value) override {
        log->Call("pb1", "=" + platform::NumberText(value));
        current = value;
    }
    CallLogPtr log;
    float minimum = 0, maximum = 100, current = 0;
};

class FakeTimer : public platform::Timer {
  public:
    explicit FakeTimer(CallLogPtr shared_log) : log(std::move(shared_log)) {}
    int Interval() const override { return interval; }
    void SetInterval(int milliseconds) override {
        log->Call("Timer1.Interval", "=" + std::to_string(milliseconds));
        interval = milliseconds;
    }
    bool Enabled() const override { return enabled; }
    void SetEnabled(bool on) override {
        log->Call("Timer1.Enabled", "=" + ValueText(on));
        enabled = on;
    }
    CallLogPtr log;
    int interval = 0;
    bool enabled = false;
};

class FakeWindow : public platform::FormWindow {
  public:
    platform::TextBox& txtCmd() override { return command_box; }
    platform::TextBox& txtInfo() override { return info; }
    platform::Button& cmdGo() override { return go; }
    platform::Button& cmdStop() override { return stop; }
    platform::ProgressBar& pb1() override { return bar; }
    platform::Label& lblStatus() override { return status; }
    platform::Label& lblFile() override { return file; }
    platform::Label& lblETm() override { return media_length; }
    platform::Label& lblprgs() override { return percent; }
    platform::Label& Label1() override { return label1; }
    platform::Label& Label2() override { return label2; }
    platform::Label& Label3() override { return label3; }
    platform::Timer& Timer1() override { return timer; }
    void SetCaption(const std::string& text) override { caption = text; }
    void SetMousePointer(platform::MousePointer pointer) override {
        log->Call("MousePointer", "=" + std::to_string(static_cast<int>(pointer)));
    }
    void Beep() override { log->Call("Beep"); }
    void MessageBox(const std::string& text, const std::string& title,
                    platform::MessageIcon icon) override {
        log->Call("MessageBox",
                  "(" + text + ", " + title + ", " + std::to_string(static_cast<int>(icon)) + ")");
    }
    std::string Arguments() const override { return arguments; }
    platform::EventLoop& Loop() override { return loop; }
    bool BeforeRecording(bool of_screen, const std::function<bool()>& wanted) override {
        return !before_recording || before_recording(of_screen, wanted);
    }
    platform::CredentialsAnswer AskCredentials(
        const platform::CredentialsQuestion& question) override {
        return ask_credentials(question);
    }

    /// The pane's lines so far.
    std::vector<std::string> PaneLines() const {
        std::vector<std::string> lines;
        std::string rest = info.text;
        for (std::size_t end = rest.find("\r\n"); end != std::string::npos;
             end = rest.find("\r\n")) {
            lines.push_back(rest.substr(0, end));
            rest.erase(0, end + 2);
        }
        return lines;
    }

    CallLogPtr log = std::make_shared<CallLog>();
    FakeTextBox command_box, info;
    FakeCaption<platform::Button> go{log, "cmdGo"}, stop{log, "cmdStop"};
    FakeProgressBar bar{log};
    FakeCaption<platform::Label> status{log, "lblStatus"}, file{log, "lblFile"},
        media_length{log, "lblETm"}, percent{log, "lblprgs"}, label1{log, "Label1"},
        label2{log, "Label2"}, label3{log, "Label3"};
    FakeTimer timer{log};
    FakeEventLoop loop;
    std::string caption, arguments;
    std::function<bool(bool of_screen, const std::function<bool()>& wanted)> before_recording;
    std::function<platform::CredentialsAnswer(const platform::CredentialsQuestion&)>
        ask_credentials;
};

}  // namespace test_support
