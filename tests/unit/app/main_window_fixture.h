// The form over fakes of window and encoder, and a host that notes what it hears of runs.
#pragma once

#include <algorithm>

#include "app/main_window.h"
#include "support/fake_host.h"

namespace app {

using Lines = std::vector<std::string>;

constexpr char kCommand[] = "-input a.avi -output out/a.wmv -profile av100";
constexpr char kOffered[] = "-profile scrna -output C:\\ZELMO\\cap1.wmv -duration 90000";
constexpr char kCompleted[] = "======== Encoding Completed ========";

class MainWindowTest : public testing::Test {
  protected:
    MainWindowTest() { factory.files->AddFile("/home/a.avi"); }

    void Go(const std::string& command) {
        window.command_box.text = command;
        form.cmdGo_Click();
    }
    test_support::FakeEncoder& Encoder() { return *factory.encoders.back(); }
    void Finish() { Encoder().Deliver(platform::EncoderState::Stopped); }
    int Started() const { return factory.log->Count("Encoder.Start"); }
    Lines Pane() const { return window.PaneLines(); }
    int PaneCount(const std::string& line) const {
        const Lines lines = Pane();
        return static_cast<int>(std::count(lines.begin(), lines.end(), line));
    }

    test_support::FakeWindow window;
    test_support::FakeFactory factory;
    frmMain form{window, factory, [] { return WallTime{}; }};
};

/// Notes what a host hears of runs.
class NotingListener : public platform::RunListener {
  public:
    void OnFileEnd(const platform::FileReport& report) override {
        heard.emplace_back("file");
        files.push_back(report);
    }
    void OnStateChange(platform::EncoderState state) override {
        heard.push_back("state " + std::to_string(static_cast<int>(state)));
    }
    void OnCommandEnd(const platform::CommandReport& report) override {
        heard.push_back((report.is_folder ? "folder " : "end ") +
                        std::to_string(static_cast<int>(report.last.end)));
    }
    std::vector<std::string> heard;
    std::vector<platform::FileReport> files;
};

}  // namespace app
