// The window over a form that only records what it is told.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QKeyEvent>
#include <QSettings>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/host/qt_window.h"
#include "platform/text.h"

namespace window_test {

class RecordingForm : public platform::FormEvents {
  public:
    void Form_Load() override { calls.emplace_back("load"); }
    void Form_Unload() override { calls.emplace_back("unload"); }
    void cmdGo_Click() override {
        calls.emplace_back("go");
        if (on_go) on_go();
    }
    void cmdStop_Click() override {
        calls.emplace_back("stop");
        if (on_stop) on_stop();
    }
    void txtCmd_KeyPress(std::int16_t key) override {
        calls.push_back("key " + std::to_string(key));
    }
    void Timer1_Timer() override {
        if (on_tick) on_tick();
    }
    void RunCommand(const std::vector<std::string>& words) override { Note("command", words); }
    void RunListing(const std::vector<std::string>& words) override { Note("listing", words); }
    bool NewSession() override {
        calls.emplace_back("new session");
        return !busy;
    }
    platform::FollowingWords WordsAfter(const std::string& option) const override {
        if (option == "-profile") return {{{"av100", "small"}, {"av350", "usual"}}, false};
        if (option == "-input") return {{}, true};
        return {{{"-profile", ""}, {"-profiles", ""}}, false};
    }
    void PauseOrResume() override { calls.emplace_back("pause"); }
    platform::RunProgress Progress() const override { return progress; }
    platform::CommandReport Report() const override { return report; }
    void SetRunListener(platform::RunListener* run_listener) override { listener = run_listener; }
    bool IsBusy() const override { return busy; }
    platform::ExitStatus Status() const override { return platform::ExitStatus::Done; }

    std::vector<std::string> calls;
    bool busy = false;
    platform::RunProgress progress;
    platform::CommandReport report;
    platform::RunListener* listener = nullptr;
    std::function<void()> on_go;
    std::function<void()> on_stop;
    std::function<void()> on_tick;

  private:
    void Note(std::string call, const std::vector<std::string>& words) {
        for (const std::string& word : words) call += "|" + word;
        calls.push_back(std::move(call));
    }
};

class Window : public testing::Test {
  protected:
    void SetUp() override {
        QSettings(QStringLiteral("tessivo"), QStringLiteral("tessivo")).clear();
        Open();
    }
    ~Window() override { form_.busy = false; }

    /// A window as a new start of the program has it.
    void Open() {
        opened_ = nullptr;
        opened_ = std::make_unique<platform::host::QtWindow>("-input a.avi");
        opened_->SetForm(form_);
        opened_->SetCaption("Orlavane Tessivo");
        opened_->show();
        opened_->activateWindow();
        QApplication::setActiveWindow(opened_.get());
        QCoreApplication::processEvents();
    }
    platform::host::QtWindow& window() { return *opened_; }

    template <typename Found>
    Found& Find(const char* name) {
        return *opened_->findChild<Found*>(QLatin1String(name));
    }
    static void Press(QWidget& widget, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
                      const QString& text = {}) {
        QKeyEvent down(QEvent::KeyPress, key, modifiers, text);
        QKeyEvent up(QEvent::KeyRelease, key, modifiers, text);
        QCoreApplication::sendEvent(&widget, &down);
        QCoreApplication::sendEvent(&widget, &up);
    }
    /// Runs the window until `done`; the test's time limit ends it when that never comes.
    void RunUntil(const std::function<bool()>& done) { opened_->Loop().RunUntil(done); }

    RecordingForm form_;

  private:
    std::unique_ptr<platform::host::QtWindow> opened_;
};

}  // namespace window_test
