// Just what the form needs of a window: its controls, message box, beep and mouse pointer.
// All of it lives on the user-interface thread. Texts are UTF-8; line breaks are "\r\n".
#pragma once

#include <functional>
#include <string>

#include "platform/credentials.h"
#include "platform/event_loop.h"

namespace platform {

class TextBox {
  public:
    virtual ~TextBox() = default;
    virtual std::string Text() const = 0;
    virtual void SetText(const std::string& text) = 0;
    /// The same as SetText(Text() + text), without reading the old text.
    virtual void AppendText(const std::string& text) = 0;
    /// Brings the last line into view.
    virtual void ScrollToEnd() = 0;
};

class Label {
  public:
    virtual ~Label() = default;
    virtual std::string Caption() const = 0;
    virtual void SetCaption(const std::string& caption) = 0;
};

class Button {
  public:
    virtual ~Button() = default;
    virtual std::string Caption() const = 0;
    virtual void SetCaption(const std::string& caption) = 0;  // "&" marks the mnemonic
};

class ProgressBar {
  public:
    virtual ~ProgressBar() = default;
    virtual float Min() const = 0;
    virtual void SetMin(float minimum) = 0;
    virtual float Max() const = 0;
    virtual void SetMax(float maximum) = 0;
    virtual float Value() const = 0;
    virtual void SetValue(float value) = 0;
};

/// Ticks into FormEvents::Timer1_Timer while enabled with an interval above 0.
class Timer {
  public:
    virtual ~Timer() = default;
    virtual int Interval() const = 0;  // milliseconds
    virtual void SetInterval(int milliseconds) = 0;
    virtual bool Enabled() const = 0;
    virtual void SetEnabled(bool enabled) = 0;
};

enum class MousePointer { Default = 0, Hourglass = 11 };
enum class MessageIcon { Critical = 16, Question = 32, Exclamation = 48, Information = 64 };

/// The window that a host builds for the form. Controls live as long as the window.
class FormWindow {
  public:
    virtual ~FormWindow() = default;

    virtual TextBox& txtCmd() = 0;
    virtual TextBox& txtInfo() = 0;
    virtual Button& cmdGo() = 0;
    virtual Button& cmdStop() = 0;
    virtual ProgressBar& pb1() = 0;
    virtual Label& lblStatus() = 0;
    virtual Label& lblFile() = 0;
    virtual Label& lblETm() = 0;
    virtual Label& lblprgs() = 0;
    virtual Label& Label1() = 0;
    virtual Label& Label2() = 0;
    virtual Label& Label3() = 0;
    virtual Timer& Timer1() = 0;

    virtual void SetCaption(const std::string& caption) = 0;
    virtual void SetMousePointer(MousePointer pointer) = 0;
    virtual void Beep() = 0;
    /// Modal.
    virtual void MessageBox(const std::string& text, const std::string& title,
                            MessageIcon icon) = 0;
    /// The process's arguments after the program name, joined by single blanks.
    virtual std::string Arguments() const = 0;
    virtual EventLoop& Loop() = 0;
    /// A recording is set up and starts as soon as this returns true; false gives it up. May run
    /// the loop for as long as `wanted` says so.
    virtual bool BeforeRecording(bool /*of_screen*/, const std::function<bool()>& /*wanted*/) {
        return true;
    }
    /// May run the loop for as long as the answer is wanted.
    virtual CredentialsAnswer AskCredentials(const CredentialsQuestion& /*question*/) { return {}; }
};

}  // namespace platform
