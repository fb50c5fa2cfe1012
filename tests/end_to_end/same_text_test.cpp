// The same command gives the same text wherever it is given: in the window, on the console, and in
// a form whose window is only remembered.
#include <gtest/gtest.h>

#include <QApplication>
#include <QSettings>
#include <string>

#include "app/main_window.h"
#include "end_to_end/console_run.h"
#include "engine/object_model/engine_factory.h"
#include "platform/host/host_factory.h"
#include "platform/host/qt_loop.h"
#include "platform/host/qt_window.h"
#include "support/fake_host.h"

namespace test_support {
namespace {

using platform::host::EngineMakers;
using platform::host::HostFactory;

/// The pane's text with plain line ends, without the one figure that is the clock's.
std::string Comparable(std::string text) {
    std::erase(text, '\r');
    const std::string label = "\tEncoding time: \t\t";
    for (std::size_t at = text.find(label); at != std::string::npos; at = text.find(label, at)) {
        at += label.size();
        text.erase(at, text.find(' ', at) - at);
    }
    return text;
}

/// What the labels of a run of this file say at its end; only a window shows them.
void ExpectLabels(platform::FormWindow& window, const std::string& input) {
    const std::pair<platform::Label&, std::string> rows[] = {
        {window.lblStatus(), "  Done."},
        {window.lblFile(), "  Encoding: " + input},
        {window.lblETm(), "Media Length: 2 secs"},
        {window.lblprgs(), "100%"},
    };
    for (const auto& [label, text] : rows) EXPECT_EQ(label.Caption(), text);
}

std::string PaneAfter(platform::FormWindow& window, const std::string& command) {
    HostFactory factory(window.Loop(), EngineMakers{engine::MakeEncoder, engine::MakeProfile},
                        [] { return false; });
    app::frmMain form(window, factory);
    window.txtCmd().SetText(command);
    form.cmdGo_Click();
    window.Loop().RunUntil([&] { return !form.IsBusy(); });
    return Comparable(window.txtInfo().Text());
}

class RememberedWindow : public FakeWindow {
  public:
    platform::EventLoop& Loop() override { return loop_; }

  private:
    platform::host::QtLoop loop_;
};

TEST(SameText, WindowConsoleAndRememberedForm) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    int argument_count = 1;
    std::string name = "same_text_tests";
    char* arguments[] = {name.data(), nullptr};
    const QApplication application(argument_count, arguments);
    const TempFolder settings;  // the window's own
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope,
                       QString::fromStdString(settings.path().string()));

    const TempFolder folder;
    std::filesystem::create_directory(folder / "in");
    const std::string clip = folder / "in/clip.avi";
    MakeClip(clip, 2, "160x120", 10);
    const std::string files = "-input " + clip + " -output " + (folder / "o.wmv");
    const std::string kCommands[] = {
        files + " -profile av350",
        files + " -v_mode 3 -v_codec WMV8 -a_mode 2 -time 500 1500",
        files + " -profile nothing",
        files + " -a_setting 50_44_2",
        "-output " + (folder / "o.wmv") + " -profile scrn",
        "-input " + (folder / "in") + " -output " + (folder / "walked") + " -profile av225",
    };
    for (const std::string& command : kCommands) {
        SCOPED_TRACE(command);
        const std::string on_console = Comparable(Console(platform::Split(command, ' ')).out);
        EXPECT_FALSE(on_console.empty());
        platform::host::QtWindow window("");
        EXPECT_EQ(PaneAfter(window, command), on_console);
        if (command == kCommands[0]) ExpectLabels(window, clip);
        RememberedWindow remembered;
        EXPECT_EQ(PaneAfter(remembered, command), on_console);
    }
    platform::host::QtWindow window("");
    EXPECT_EQ(PaneAfter(window, "-a_codecs"), Console({"-help"}).out) << "one word is no command";
    EXPECT_EQ(window.lblStatus().Caption(), "Change parameters, then press Go.  (Help is above)");
}

}  // namespace
}  // namespace test_support
