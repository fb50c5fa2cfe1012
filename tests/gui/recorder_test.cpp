// What recorders have beside Go and Stop: pause, parts of the screen, options, notifications.
#include <QAccessible>
#include <QAction>
#include <QActionGroup>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QKeySequenceEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QScreen>
#include <fstream>

#include "gui/window_fixture.h"
#include "platform/host/qt_rubber_band.h"
#include "platform/host/qt_tray.h"
#include "support/commands.h"

namespace window_test {
namespace {

using platform::CommandEnd;
using platform::EncoderState;
using platform::host::RubberBand;
using testing::ElementsAre;
using testing::IsEmpty;

void Mouse(QWidget& widget, QEvent::Type type, QPoint place, Qt::MouseButton button) {
    QMouseEvent event(type, place, widget.mapToGlobal(place), button, button, Qt::NoModifier);
    QCoreApplication::sendEvent(&widget, &event);
}

RubberBand* Band() {
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (widget->objectName() == QLatin1String("rubberBand") && widget->isVisible())
            return static_cast<RubberBand*>(widget);
    return nullptr;
}

class Recorder : public Window {
  protected:
    ~Recorder() override { qunsetenv("TESSIVO_SCREEN"); }
    void Deliver(EncoderState state) { form_.listener->OnStateChange(state); }
    QAction& Action(const char* name) { return Find<QAction>(name); }
    void OpenScreenMenu() { QMetaObject::invokeMethod(&Find<QMenu>("screenMenu"), "aboutToShow"); }
    /// What is chosen in the menu of the screen and in that of its windows.
    std::vector<std::string> Chosen() {
        OpenScreenMenu();
        std::vector<std::string> names;
        const auto add = [&](const QMenu& menu) {
            for (const QAction* action : menu.actions())
                if (action->isChecked() && action->actionGroup() != nullptr)
                    names.push_back(action->text().toStdString());
        };
        auto& menu = Find<QMenu>("screenMenu");
        add(menu);
        for (const QAction* action : menu.actions())
            if (const auto* sub_menu = action->menu<QMenu*>()) add(*sub_menu);
        return names;
    }
    RubberBand& ChooseRegion() {
        Action("chooseRegion").trigger();
        RunUntil([] { return Band() != nullptr; });
        return *Band();
    }
    QAction& Part(const char* text) {
        OpenScreenMenu();
        auto& menu = Find<QMenu>("screenMenu");
        for (QAction* action : menu.actions()) {
            if (action->text() == QLatin1String(text)) return *action;
            const auto* sub_menu = action->menu<QMenu*>();
            if (sub_menu == nullptr) continue;
            for (QAction* inner : sub_menu->actions())
                if (inner->text() == QLatin1String(text)) return *inner;
        }
        throw std::runtime_error(text);
    }
};

struct PhaseCase {
    EncoderState state;
    const char* button;
    const char* entry;
    bool enabled;
};

TEST_F(Recorder, PauseFollowsTheRun) {
    const PhaseCase cases[] = {
        // state, button, entry, enabled
        {EncoderState::Starting, "&Pause", "&Pause", true},
        {EncoderState::Running, "&Pause", "&Pause", true},
        {EncoderState::Paused, "Resu&me", "&Resume", true},
        {EncoderState::Running, "&Pause", "&Pause", true},
        {EncoderState::EndPreprocess, "&Pause", "&Pause", true},
        {EncoderState::Stopping, "&Pause", "&Pause", false},
        {EncoderState::Stopped, "&Pause", "&Pause", false},
    };
    auto& button = Find<QPushButton>("cmdPause");
    EXPECT_FALSE(button.isEnabled());
    EXPECT_FALSE(Action("pauseRun").isEnabled());
    for (const PhaseCase& c : cases) {
        SCOPED_TRACE(static_cast<int>(c.state));
        Deliver(c.state);
        EXPECT_EQ(button.text(), c.button);
        EXPECT_EQ(Action("pauseRun").text(), c.entry);
        EXPECT_EQ(button.isEnabled(), c.enabled);
        EXPECT_EQ(Action("pauseRun").isEnabled(), c.enabled);
        form_.calls.clear();
        button.click();
        Action("pauseRun").trigger();
        EXPECT_EQ(form_.calls.size(), c.enabled ? 2U : 0U);
    }
}

TEST_F(Recorder, OnlyRecordingsMinimiseAndOnlyWhenAsked) {
    for (const bool wanted : {false, true}) {
        Open();
        Action("minimiseOnStart").setChecked(wanted);
        form_.progress.input = "a.avi";
        Deliver(EncoderState::Running);
        Deliver(EncoderState::Stopped);
        EXPECT_FALSE(window().isMinimized()) << "a file";
        EXPECT_TRUE(window().BeforeRecording(true, [] { return true; }));
        EXPECT_EQ(window().isMinimized(), wanted) << "before the first frame";
    }
}

TEST_F(Recorder, OptionsOutliveTheWindow) {
    EXPECT_FALSE(Action("minimiseOnStart").isChecked());
    EXPECT_TRUE(Action("trayIcon").isChecked());
    EXPECT_TRUE(Action("notify").isChecked());
    for (const char* name : {"minimiseOnStart", "trayIcon", "notify"}) Action(name).trigger();
    Open();
    EXPECT_TRUE(Action("minimiseOnStart").isChecked());
    EXPECT_FALSE(Action("trayIcon").isChecked());
    EXPECT_FALSE(Action("notify").isChecked());
}

TEST_F(Recorder, HotkeysAreOfferedOnX11Only) {
    EXPECT_FALSE(Action("hotkeys").isEnabled());
    EXPECT_THAT(Action("hotkeys").toolTip().toStdString(), testing::HasSubstr("X11"));
}

TEST_F(Recorder, ThePartOfTheScreenIsChosenAndShown) {
    window().SetScreenParts([] {
        return platform::ScreenParts{
            false,
            {{"Monitor 0: A, 10x20", "monitor:0"}, {"Monitor 1: B, 10x20", "monitor:1"}},
            {{"Edit & view", "window:Edit & view"}}};
    });
    EXPECT_THAT(Chosen(), ElementsAre("Whole &screen"));
    struct Case {
        const char* entry;
        const char* value;
    };
    for (const Case& c : {Case{"Monitor 1: B, 10x20", "monitor:1"},
                          Case{"Edit && view", "window:Edit & view"}, Case{"Whole &screen", ""}}) {
        Part(c.entry).trigger();
        EXPECT_EQ(qEnvironmentVariable("TESSIVO_SCREEN"), c.value);
        EXPECT_THAT(Chosen(), ElementsAre(c.entry));
    }
    qputenv("TESSIVO_SCREEN", "window:closed");
    EXPECT_THAT(Chosen(), ElementsAre("window:closed")) << "not there, but chosen";
    EXPECT_THAT(form_.calls, IsEmpty());
}

TEST_F(Recorder, NothingIsChosenWhereTheDesktopAsks) {
    window().SetScreenParts([] { return platform::ScreenParts{true, {}, {}}; });
    EXPECT_FALSE(Part("Choose a &region...").isEnabled());
    EXPECT_THAT(Part("&Window").toolTip().toStdString(), testing::HasSubstr("Wayland"));
    window().SetScreenParts([]() -> platform::ScreenParts {
        throw platform::Error(platform::kFileNotFound, "no display");
    });
    EXPECT_THAT(Chosen(), ElementsAre("Whole &screen"));
}

TEST_F(Recorder, ARegionIsDrawn) {
    struct Case {
        const char* why;
        QPoint from;
        QPoint to;
        const char* value;  // "" = the band stays
    };
    const Case cases[] = {
        // why, from, to, value
        {"down and to the right", {10, 20}, {109, 69}, "region:100x50+10+20"},
        {"up and to the left", {109, 69}, {10, 20}, "region:100x50+10+20"},
        {"past the edge", {5, 5}, {-40, 14}, "region:6x10+0+5"},
        {"a click", {30, 30}, {30, 30}, ""},
    };
    for (const Case& c : cases) {
        qunsetenv("TESSIVO_SCREEN");
        RubberBand* band = &ChooseRegion();
        QAccessibleInterface* spoken = QAccessible::queryAccessibleInterface(band);
        EXPECT_FALSE(spoken->text(QAccessible::Name).isEmpty());
        Mouse(*band, QEvent::MouseButtonPress, c.from, Qt::LeftButton);
        Mouse(*band, QEvent::MouseMove, c.to, Qt::LeftButton);
        EXPECT_FALSE(band->grab().isNull());
        Mouse(*band, QEvent::MouseButtonRelease, c.to, Qt::LeftButton);
        EXPECT_EQ(qEnvironmentVariable("TESSIVO_SCREEN"), c.value) << c.why;
        EXPECT_EQ(Band() == nullptr, *c.value != '\0') << c.why;
        if (band = Band(); band != nullptr) Press(*band, Qt::Key_Escape);
        EXPECT_EQ(Band(), nullptr) << c.why;
    }
    qputenv("TESSIVO_SCREEN", "monitor:0");
    for (const bool by_key : {true, false}) {
        RubberBand& band = ChooseRegion();
        if (by_key)
            Press(band, Qt::Key_Escape);
        else
            Mouse(band, QEvent::MouseButtonPress, {3, 3}, Qt::RightButton);
        EXPECT_EQ(Band(), nullptr);
        EXPECT_EQ(qEnvironmentVariable("TESSIVO_SCREEN"), "monitor:0") << "given up";
    }
}

TEST_F(Recorder, AHiddenWindowClosesWithTheProgram) {
    window().hide();
    QTimer::singleShot(0, &window(), [&] { window().close(); });
    EXPECT_EQ(QApplication::exec(), 0);
    EXPECT_THAT(form_.calls, ElementsAre("unload"));
}

TEST(RunText, SaysStateAndPlayingTime) {
    RecordingForm form;
    platform::host::RunWatch watch;
    watch.SetForm(form);
    EXPECT_EQ(RunText(watch), "idle");
    form.progress.encoded_ms = 3'723'900;
    watch.OnStateChange(EncoderState::Running);
    EXPECT_EQ(RunText(watch), "recording, 1:02:03");
    watch.OnStateChange(EncoderState::Paused);
    EXPECT_EQ(RunText(watch), "paused, 1:02:03");
    watch.OnStateChange(EncoderState::Stopped);
    form.progress.input = "a.avi";
    watch.OnStateChange(EncoderState::Running);
    EXPECT_EQ(RunText(watch), "encoding, 1:02:03");
}

/// A bus with a notification service that notes what it is asked to show.
class NotificationService : public QDBusVirtualObject {
  public:
    NotificationService() {
        if (!test_support::Eventually([this] {
                std::ifstream printed(folder_ / "out");
                return static_cast<bool>(std::getline(printed, address_)) && !printed.eof();
            }))
            throw std::runtime_error("dbus-daemon is needed, see packages.txt");
        qputenv("DBUS_SESSION_BUS_ADDRESS", QByteArray::fromStdString(address_));
        QDBusConnection bus =
            QDBusConnection::connectToBus(QString::fromStdString(address_), "service");
        bus.registerVirtualObject("/org/freedesktop/Notifications", this);
        bus.registerService("org.freedesktop.Notifications");
    }
    ~NotificationService() override { QDBusConnection::disconnectFromBus("service"); }

    QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
        if (message.member() != QLatin1String("Notify")) return false;
        const QVariantList arguments = message.arguments();
        shown.push_back(arguments.value(3).toString().toStdString() + "|" +
                        arguments.value(4).toString().toStdString());
        signature = message.signature();
        buttons = arguments.value(5).toStringList();
        bus.send(message.createReply(++number_));
        return true;
    }
    /// A button of the last message is pressed, or one of a message of another program.
    void Press(const char* button, bool of_last) {
        QDBusMessage signal = QDBusMessage::createSignal(
            "/org/freedesktop/Notifications", "org.freedesktop.Notifications", "ActionInvoked");
        signal << (of_last ? number_ : number_ + 1) << button;
        QDBusConnection("service").send(signal);
    }

    std::vector<std::string> shown;
    QString signature;
    QStringList buttons;

  private:
    uint number_ = 6;
    test_support::TempFolder folder_;
    test_support::BackgroundCommand bus_{
        {"dbus-daemon", "--session", "--nofork", "--print-address"}, folder_.path()};
    std::string address_;
};

TEST_F(Recorder, WhatNobodyWatchedIsNotified) {
    NotificationService service;
    struct Case {
        const char* why;
        const char* input;
        bool minimised;
        CommandEnd end;
        bool folder;
        const char* shown;
    };
    const Case cases[] = {
        // why, input, minimised, end, folder, what is shown
        {"a recording is always said", "", false, CommandEnd::Stopped, false,
         "a &b.wmv is recorded|/v/a &amp;b.wmv"},
        {"a file that was watched is not", "c.avi", false, CommandEnd::Completed, false, ""},
        {"a file in the background", "c.avi", true, CommandEnd::Completed, false,
         "a &b.wmv is encoded|/v/a &amp;b.wmv"},
        {"an error", "c.avi", true, CommandEnd::Failed, false, "Encoding a &b.wmv failed|no room"},
        {"a recording's error", "", false, CommandEnd::Failed, false,
         "The recording a &b.wmv ended with an error|no room"},
        {"a folder", "c.avi", true, CommandEnd::Completed, true,
         "The folder is done|3 files encoded."},
        {"a folder of which a part failed", "c.avi", true, CommandEnd::Failed, true,
         "The folder is done, but not all of it|3 files encoded."},
        {"a folder that was refused", "c.avi", true, CommandEnd::Refused, true,
         "The folder was not encoded|no room"},
    };
    for (const Case& c : cases) {
        Open();
        if (c.minimised) window().showMinimized();
        service.shown.clear();
        form_.progress.input = c.input;
        Deliver(EncoderState::Running);
        Deliver(EncoderState::Stopped);
        platform::CommandReport report;
        report.is_folder = c.folder;
        if (c.folder) report.notices = {"3 files encoded."};
        report.last.end = c.end;
        report.last.output = c.folder ? "" : "/v/a &b.wmv";
        if (IsFailure(c.end)) report.last.error = platform::ErrorReport{1, "no room"};
        form_.listener->OnCommandEnd(report);
        // What came in between would be here before this one.
        form_.progress.input = "";
        Deliver(EncoderState::Running);
        Deliver(EncoderState::Stopped);
        platform::CommandReport next;
        next.last.end = CommandEnd::Completed;
        next.last.output = "/v/last.wmv";
        form_.listener->OnCommandEnd(next);
        const std::string last = "last.wmv is recorded|/v/last.wmv";
        RunUntil([&] { return !service.shown.empty() && service.shown.back() == last; });
        service.shown.pop_back();
        EXPECT_EQ(service.shown,
                  *c.shown == '\0' ? std::vector<std::string>() : std::vector<std::string>{c.shown})
            << c.why;
    }
    EXPECT_EQ(service.signature, "susssasa{sv}i");
    EXPECT_THAT(service.buttons, IsEmpty()) << "no file that could be played";

    std::vector<std::string> opened;
    window().SetOpener([&](const QUrl& url) {
        opened.push_back(url.toLocalFile().toStdString());
        return true;
    });
    const test_support::TempFolder folder;
    const std::string file = folder.path() / "talk.wmv";
    std::ofstream(file) << "whole";
    platform::CommandReport report;
    report.last.end = CommandEnd::Stopped;
    report.last.output = file;
    report.last.file = platform::FileArchiveStats();
    service.shown.clear();
    form_.listener->OnCommandEnd(report);
    RunUntil([&] { return !service.shown.empty(); });
    EXPECT_EQ(service.buttons.join('|'), "play|Play|folder|Open folder");
    service.Press("play", false);
    service.Press("folder", true);
    service.Press("play", true);
    RunUntil([&] { return opened.size() == 2; });
    EXPECT_THAT(opened, ElementsAre(folder.path().string(), file));
}

}  // namespace
}  // namespace window_test
