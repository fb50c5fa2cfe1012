// A recording from its countdown to what can be done with its file.
#include <QAction>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QKeySequenceEdit>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QTemporaryFile>

#include "gui/window_fixture.h"
#include "platform/host/qt_hotkey_dialog.h"
#include "platform/host/qt_recorded_size.h"

namespace window_test {
namespace {

using platform::CommandEnd;
using platform::EncoderState;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::vector<QWidget*> Shown(const char* name) {
    std::vector<QWidget*> shown;
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (widget->objectName() == QLatin1String(name) && widget->isVisible())
            shown.push_back(widget);
    return shown;
}

class Recording : public Window {
  protected:
    ~Recording() override {
        qunsetenv("TESSIVO_SCREEN");
        qunsetenv("TESSIVO_POINTER");
    }
    QAction& Action(const char* name) { return Find<QAction>(name); }
    // The second of a run.
    void Tick() {
        bool ticked = false;
        form_.on_tick = [&] { ticked = true; };
        window().Timer1().SetInterval(1);
        window().Timer1().SetEnabled(true);
        RunUntil([&] { return ticked; });
        window().Timer1().SetEnabled(false);
    }
    QAction& ScreenAction(const char* name) {
        QMetaObject::invokeMethod(&Find<QMenu>("screenMenu"), "aboutToShow");
        return Action(name);
    }
    static platform::CommandReport ReportOf(CommandEnd end, const std::string& output) {
        platform::CommandReport report;
        report.last.end = end;
        report.last.output = output;
        report.last.file = platform::FileArchiveStats{platform::Currency::FromRaw(3'400'000),
                                                      platform::Currency::FromRaw(12'900)};
        return report;
    }
    void End(const char* input, const platform::CommandReport& report) {
        form_.progress.input = input;
        form_.listener->OnStateChange(EncoderState::Running);
        form_.listener->OnStateChange(EncoderState::Stopped);
        form_.listener->OnCommandEnd(report);
    }
};

TEST_F(Recording, IsFramedWhereARegionIsTaken) {
    struct Case {
        const char* why;
        const char* choice;
        bool of_screen;
        bool wanted;
        bool framed;
    };
    for (const Case& c : {Case{"a region", "region:100x50+10+20", true, true, true},
                          Case{"not asked for", "region:100x50+10+20", true, false, false},
                          Case{"a camera", "region:100x50+10+20", false, true, false},
                          Case{"all of the screen", "", true, true, false},
                          Case{"a monitor", "monitor:0", true, true, false}}) {
        qputenv("TESSIVO_SCREEN", c.choice);
        Action("regionFrame").setChecked(c.wanted);
        EXPECT_TRUE(window().BeforeRecording(c.of_screen, [] { return true; }));
        EXPECT_EQ(!Shown("regionFrame").empty(), c.framed) << c.why;
        QRect around;
        for (const QWidget* side : Shown("regionFrame")) {
            EXPECT_FALSE(side->geometry().intersects(QRect(10, 20, 100, 50))) << c.why;
            around |= side->geometry();
        }
        EXPECT_EQ(around.contains(QRect(10, 20, 100, 50)), c.framed) << c.why;
        form_.listener->OnStateChange(EncoderState::Running);
        form_.listener->OnStateChange(EncoderState::Stopped);
        EXPECT_THAT(Shown("regionFrame"), IsEmpty()) << c.why;
    }
}

TEST_F(Recording, WaitsForTheCountdownUnlessItIsGivenUp) {
    EXPECT_TRUE(Action("countdownOff").isChecked());
    Action("countdown10").trigger();
    Open();
    EXPECT_TRUE(Action("countdown10").isChecked());
    qputenv("TESSIVO_SCREEN", "region:100x50+10+20");
    bool counted = false;
    EXPECT_FALSE(window().BeforeRecording(true, [&] {
        counted = counted || !Shown("countdown").empty();
        return !counted;
    }));
    EXPECT_TRUE(counted);
    EXPECT_THAT(Shown("countdown"), IsEmpty());
    EXPECT_THAT(Shown("regionFrame"), IsEmpty());

    QSettings(QStringLiteral("tessivo"), QStringLiteral("tessivo")).setValue("countdown", 1);
    Open();
    counted = false;
    EXPECT_TRUE(window().BeforeRecording(true, [&] {
        counted = counted || !Shown("countdown").empty();
        return true;
    }));
    EXPECT_TRUE(counted);
    EXPECT_THAT(Shown("countdown"), IsEmpty()) << "before the first frame";
}

TEST_F(Recording, ARegionIsGivenByNumbers) {
    window().SetScreenParts([] { return platform::ScreenParts{}; });
    ScreenAction("regionByNumbers").trigger();
    auto& ok =
        *Find<QDialog>("regionDialog").findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok);
    const QSize screen = window().screen()->size();
    struct Case {
        int width, height, left, top;
        bool inside;
    };
    for (const Case& c :
         {Case{screen.width(), screen.height(), 1, 0, false},
          Case{screen.width(), screen.height(), 0, 1, false},
          Case{screen.width(), screen.height(), 0, 0, true}, Case{101, 51, 13, 21, true}}) {
        Find<QSpinBox>("regionWidth").setValue(c.width);
        Find<QSpinBox>("regionHeight").setValue(c.height);
        Find<QSpinBox>("regionLeft").setValue(c.left);
        Find<QSpinBox>("regionTop").setValue(c.top);
        EXPECT_EQ(ok.isEnabled(), c.inside) << c.left << " " << c.top;
    }
    EXPECT_THAT(Shown("regionFrame"), testing::Not(IsEmpty()));
    ok.click();
    EXPECT_THAT(Shown("regionFrame"), IsEmpty());
    EXPECT_EQ(qEnvironmentVariable("TESSIVO_SCREEN"), "region:101x51+13+21");
    ScreenAction("regionByNumbers").trigger();
    EXPECT_EQ(Find<QSpinBox>("regionLeft").value(), 13) << "begins with what is chosen";
}

TEST_F(Recording, ThePointerIsSwitchedOffAndOn) {
    EXPECT_TRUE(ScreenAction("recordPointer").isChecked());
    ScreenAction("recordPointer").trigger();
    EXPECT_EQ(qEnvironmentVariable("TESSIVO_POINTER"), "off");
    EXPECT_FALSE(ScreenAction("recordPointer").isChecked());
    ScreenAction("recordPointer").trigger();
    EXPECT_FALSE(qEnvironmentVariableIsSet("TESSIVO_POINTER"));
}

TEST_F(Recording, OneKeyMayStartAndStopButNotPauseToo) {
    QSettings settings(QStringLiteral("tessivo"), QStringLiteral("tessivo"));
    platform::host::WindowOptions options(settings);
    platform::host::HotkeyDialog dialog(options, nullptr);
    const auto field = [&](const char* name) {
        return dialog.findChild<QKeySequenceEdit*>(QLatin1String(name));
    };
    EXPECT_TRUE(field("startKey")->keySequence().isEmpty());
    auto& ok = *dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok);
    field("startKey")->setKeySequence(field("pauseKey")->keySequence());
    EXPECT_FALSE(ok.isEnabled());
    field("startKey")->setKeySequence(field("stopKey")->keySequence());
    EXPECT_TRUE(ok.isEnabled());
    ok.click();
    EXPECT_EQ(options.Key(platform::host::Hotkey::Start),
              options.Key(platform::host::Hotkey::Stop));
}

TEST_F(Recording, ItsFileCanBePlayedAndFound) {
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    const std::string path = file.fileName().toStdString();
    const std::string name = QFileInfo(file).fileName().toStdString();
    std::vector<std::string> opened;
    bool can_open = true;
    window().SetOpener([&](const QUrl& url) {
        opened.push_back(url.toLocalFile().toStdString());
        return can_open;
    });
    auto& bar = Find<QWidget>("resultBar");
    EXPECT_FALSE(bar.isVisible());

    End("", ReportOf(CommandEnd::Stopped, path));
    EXPECT_TRUE(bar.isVisible());
    EXPECT_EQ(Find<QLabel>("result").accessibleName().toStdString(),
              name + " is recorded: 0:00:12, 3.4 MB");
    Find<QPushButton>("playResult").click();
    Find<QPushButton>("showResultFolder").click();
    EXPECT_THAT(opened, ElementsAre(path, QFileInfo(file).absolutePath().toStdString()));
    can_open = false;
    Find<QPushButton>("playResult").click();
    EXPECT_THAT(Find<QLabel>("message").accessibleName().toStdString(), HasSubstr("no program"));
    file.remove();
    opened.clear();
    Find<QPushButton>("playResult").click();
    EXPECT_THAT(opened, IsEmpty());
    EXPECT_THAT(Find<QLabel>("message").accessibleName().toStdString(), HasSubstr("gone"));

    Find<QLineEdit>("txtCmd").setText("-input a -output b");
    Find<QPushButton>("cmdGo").click();
    EXPECT_FALSE(bar.isVisible()) << "belongs to the run before";
    End("", ReportOf(CommandEnd::Failed, path));
    EXPECT_TRUE(bar.isVisible()) << "a recording is whole up to its error";
    End("a.avi", ReportOf(CommandEnd::Failed, path));
    EXPECT_FALSE(bar.isVisible());
}

TEST_F(Recording, ItsSizeIsShownWhileItRuns) {
    form_.progress.output = QDir::tempPath().toStdString() + "/a.wmv";
    form_.progress.total.byte_count = platform::Currency::FromRaw(1'500'000);
    auto& size = Find<QLabel>("recordedSize");
    form_.listener->OnStateChange(EncoderState::Running);
    Tick();
    EXPECT_TRUE(size.isVisible());
    EXPECT_THAT(size.text().toStdString(), testing::MatchesRegex("1\\.5 MB, .+ free"));
    form_.listener->OnStateChange(EncoderState::Stopped);
    EXPECT_FALSE(size.isVisible());
    form_.progress.input = "film.avi";
    form_.listener->OnStateChange(EncoderState::Running);
    Tick();
    EXPECT_FALSE(size.isVisible()) << "a file's own size says nothing of the room";
    EXPECT_TRUE(platform::host::IsScarce(1'000'000));
    EXPECT_FALSE(platform::host::IsScarce(50'000'000'000));
}

TEST_F(Recording, AsksWhoPushes) {
    struct Case {
        const char* why;
        bool refused;
        int key;
        bool stopped;
        bool answered;
    };
    for (const Case& c :
         {Case{"an answer", false, Qt::Key_Return, false, true},
          Case{"a better one", true, Qt::Key_Return, false, true},
          Case{"none", false, Qt::Key_Escape, false, false}, Case{"Stop", false, 0, true, false}}) {
        bool asked = false;
        const auto person = [&] {
            auto& dialog = Find<QDialog>("credentialsDialog");
            if (std::exchange(asked, true) || !dialog.isVisible()) return !c.stopped;
            EXPECT_THAT(dialog.accessibleDescription().toStdString(),
                        HasSubstr(c.refused ? "media/live refuses" : "media/live wants to know"));
            auto& user = Find<QLineEdit>("pushUser");
            auto& password = Find<QLineEdit>("pushPassword");
            const auto& ok = *dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok);
            EXPECT_EQ(dialog.focusWidget(), &user) << c.why;
            Press(user, Qt::Key_A, Qt::NoModifier, QStringLiteral(" "));
            EXPECT_FALSE(ok.isEnabled());
            Press(user, Qt::Key_A, Qt::NoModifier, QStringLiteral("anna"));
            EXPECT_TRUE(ok.isEnabled());
            Press(password, Qt::Key_S, Qt::NoModifier, QStringLiteral("secret"));
            EXPECT_EQ(password.displayText().indexOf(QStringLiteral("secret")), -1);
            EXPECT_EQ(password.accessibleName(), QStringLiteral("Password"));
            if (c.key != 0) Press(password, c.key);
            return !c.stopped;
        };
        const auto answer = window().AskCredentials({"media/live", c.refused, person});
        EXPECT_TRUE(asked) << c.why;
        ASSERT_EQ(answer.has_value(), c.answered) << c.why;
        if (!answer) continue;
        EXPECT_EQ(answer->user, "anna");
        EXPECT_EQ(answer->password, "secret");
    }
}

TEST_F(Recording, ABroadcastShowsItsAddressAndWhoListens) {
    auto& bar = Find<QWidget>("broadcastBar");
    platform::BroadcastStats stats;
    stats.addresses = {"http://192.0.2.7:8080/", "http://[2001:db8::7]:8080/"};
    form_.listener->OnStateChange(EncoderState::Running);
    Tick();
    EXPECT_FALSE(bar.isVisible()) << "nothing is broadcast";
    form_.progress.network.broadcast = stats;
    Tick();
    EXPECT_TRUE(bar.isVisible());
    EXPECT_EQ(Find<QLabel>("broadcastAddress").accessibleName(),
              QStringLiteral("Broadcasting at http://192.0.2.7:8080/"));
    auto& listeners = Find<QLabel>("listeners");
    EXPECT_EQ(listeners.text(), QStringLiteral("0 listeners, at most 0"));
    form_.progress.network.broadcast->clients = 1;
    form_.progress.network.broadcast->most_clients = 12;
    Tick();
    EXPECT_EQ(listeners.accessibleName(), QStringLiteral("1 listener, at most 12"));
    auto& copy = Find<QPushButton>("copyAddress");
    EXPECT_EQ(copy.focusPolicy(), Qt::StrongFocus) << "by the keyboard alone too";
    copy.click();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("http://192.0.2.7:8080/"));
    form_.listener->OnStateChange(EncoderState::Stopped);
    EXPECT_FALSE(bar.isVisible());
}

}  // namespace
}  // namespace window_test
