#include "platform/host/qt_encoding_menu.h"

#include <QCoreApplication>

#include "platform/host/qt_region_frame.h"

namespace platform::host {

namespace {

QString Text(const char* text) { return QCoreApplication::translate("EncodingMenu", text); }

struct ToggleRow {
    WindowOption option;
    const char* name;
    const char* text;
    const char* tip;
};

// clang-format off
constexpr ToggleRow kToggles[] = {
    {WindowOption::MinimiseOnStart, "minimiseOnStart", "&Minimise when a recording starts",
        "The window is out of the way before the first picture is taken"},
    {WindowOption::RegionFrame,     "regionFrame",     "&Frame around a recorded region",
        "Shows where the region lies while it is recorded; the frame is outside of it"},
    {WindowOption::TrayIcon,        "trayIcon",        "&Icon in the tray",
        "The desktop's tray shows what is running, for how long, and a menu to steer it"},
    {WindowOption::Notify,          "notify",          "&Notify when it has ended",
        "The desktop says when a recording, or a run that nobody watched, has ended"},
};
// clang-format on

void Disable(QAction& action, const QString& reason) {
    action.setEnabled(false);
    action.setToolTip(reason);
    action.setStatusTip(reason);
}

}  // namespace

EncodingMenu::EncodingMenu(const QString& title, RunWatch& watch, WindowOptions& options,
                           Desktop& desktop, const RunCommands& commands, QWidget* parent)
    : QMenu(title, parent) {
    setObjectName(QStringLiteral("encodingMenu"));
    setAccessibleName(QString(title).remove(QLatin1Char('&')));
    setToolTipsVisible(true);

    QAction& pause = Add("pauseRun", Text("&Pause"),
                         Text("Nothing is taken in until it is resumed; the file has no gap"));
    pause.setShortcut(QKeySequence(QStringLiteral("Ctrl+P")));
    pause.setAutoRepeat(false);
    pause.setEnabled(false);
    connect(&pause, &QAction::triggered, this, [run = commands.pause_or_resume] { run(); });
    watch.OnPhase([&pause, &watch] {
        pause.setText(watch.phase() == RunPhase::Paused ? Text("&Resume") : Text("&Pause"));
        pause.setEnabled(watch.CanPause());
    });
    addSeparator();
    for (const ToggleRow& row : kToggles) {
        QAction& toggle = Add(row.name, Text(row.text), Text(row.tip));
        toggle.setCheckable(true);
        toggle.setChecked(options.Is(row.option));
        connect(&toggle, &QAction::toggled, this,
                [&desktop, option = row.option](bool on) { desktop.SetOption(option, on); });
    }
    AddCountdown(options);
    QAction& hotkeys = Add("hotkeys", Text("Global &hotkeys..."),
                           Text("Chooses the keys that start, pause and stop while another program "
                                "is in front"));
    connect(&hotkeys, &QAction::triggered, this, [&desktop] { desktop.ChooseHotkeys(); });
    if (!Hotkeys::AreOffered())
        Disable(hotkeys, Text("Only an X11 desktop lets a program have keys of its own"));
    if (!RegionFrame::IsOffered())
        Disable(*findChild<QAction*>(QLatin1String("regionFrame")),
                Text("Only an X11 desktop lets a program say where a frame lies"));
}

void EncodingMenu::AddCountdown(WindowOptions& options) {
    QMenu& menu = *addMenu(Text("&Countdown"));
    menu.setObjectName(QStringLiteral("countdownMenu"));
    menu.setAccessibleName(Text("Countdown"));
    menu.menuAction()->setStatusTip(Text("How long a recording waits before it begins"));
    for (const int seconds : {0, 3, 5, 10}) {
        QAction* const action =
            menu.addAction(seconds == 0 ? Text("&None") : Text("&%1 seconds").arg(seconds));
        action->setObjectName(seconds == 0 ? QStringLiteral("countdownOff")
                                           : QStringLiteral("countdown%1").arg(seconds));
        action->setStatusTip(menu.menuAction()->statusTip());
        action->setCheckable(true);
        action->setChecked(options.CountdownSeconds() == seconds);
        action->setActionGroup(&countdown_);
        connect(action, &QAction::triggered, this,
                [&options, seconds] { options.SetCountdownSeconds(seconds); });
    }
}

QAction& EncodingMenu::Add(const char* name, const QString& text, const QString& tip) {
    QAction* const action = addAction(text);
    action->setObjectName(QLatin1String(name));
    action->setStatusTip(tip);
    return *action;
}

}  // namespace platform::host
