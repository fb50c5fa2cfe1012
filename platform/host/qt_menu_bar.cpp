#include "platform/host/qt_menu_bar.h"

#include <QAction>
#include <QCoreApplication>
#include <QKeySequence>
#include <string_view>

namespace platform::host {

namespace {

struct MenuRow {
    const char* menu;  // object name
    const char* name;  // object name; "" = a line between two groups
    const char* text;
    const char* shortcut;  // "" = none
    const char* tip;
    void (*run)(MenuCommands&);
};

// clang-format off
constexpr const char* kMenus[][2] = {
    // name        title; G, S and C are taken by the buttons and the command box
    {"fileMenu",   "&File"},
    {"recentMenu", "&Recent"},
    {"listMenu",   "&List"},
    {"helpMenu",   "&Help"},
};

constexpr MenuRow kRows[] = {
    // menu       name               text                       shortcut   tip  what it runs
    {"fileMenu", "newSession",      "&New session",             "Ctrl+N",
        "Puts every setting back to not given, as in a window that has just been opened",
        [](MenuCommands& menu) { menu.NewSession(); }},
    {"fileMenu", "", "", "", "", nullptr},
    {"fileMenu", "chooseInput",     "&Input...",                "Ctrl+I",
        "Puts a file into the command as what is encoded",
        [](MenuCommands& menu) { menu.ChooseInput(); }},
    {"fileMenu", "chooseOutput",    "&Output...",               "Ctrl+Shift+O",
        "Puts a name into the command as what is written",
        [](MenuCommands& menu) { menu.ChooseOutput(); }},
    {"fileMenu", "loadProfile",     "Loa&d profile...",         "",
        "Puts a profile file into the command",
        [](MenuCommands& menu) { menu.LoadProfile(); }},
    {"fileMenu", "loadSession",     "Lo&ad session...",         "",
        "Puts a session file into the command: sources, profile and output in one",
        [](MenuCommands& menu) { menu.LoadSession(); }},
    {"fileMenu", "saveSession",     "Sa&ve session as...",      "",
        "Saves what the command sets up as a session file, without running it",
        [](MenuCommands& menu) { menu.SaveSession(); }},
    {"fileMenu", "", "", "", "", nullptr},
    {"fileMenu", "fileInformation", "File in&formation...",     "Ctrl+O",
        "Writes what is known about a media file to the output",
        [](MenuCommands& menu) { menu.ShowFileInformation(); }},
    {"fileMenu", "repairFile",      "Re&pair a file...",        "",
        "Makes a Windows Media file that was cut off whole; the result takes its place",
        [](MenuCommands& menu) { menu.RepairFile(); }},
    {"fileMenu", "", "", "", "", nullptr},
    {"fileMenu", "savePane",        "&Save output...",          "Ctrl+S",
        "Saves the text of the output as a file",
        [](MenuCommands& menu) { menu.SavePane(); }},
    {"fileMenu", "clearPane",       "&Clear output",            "Ctrl+Shift+L",
        "Empties the output",
        [](MenuCommands& menu) { menu.ClearPane(); }},
    {"fileMenu", "goToCommand",     "&Go to the command box",   "Ctrl+L",
        "Selects the command, so that typing replaces it",
        [](MenuCommands& menu) { menu.GoToCommand(); }},
    {"fileMenu", "", "", "", "", nullptr},
    {"fileMenu", "quit",            "&Quit",                    "Ctrl+Q",
        "Closes the window; asks first while an encoding runs",
        [](MenuCommands& menu) { menu.Quit(); }},
    {"listMenu", "listDevices",     "&Devices",                 "",
        "Lists the devices that can be recorded from, with the numbers of -adevice and -vdevice",
        [](MenuCommands& menu) { menu.ListDevices(); }},
    {"listMenu", "listAudioCodecs", "&Audio codecs",            "",
        "Lists the names that -a_codec takes",
        [](MenuCommands& menu) { menu.ListAudioCodecs(); }},
    {"listMenu", "listVideoCodecs", "&Video codecs",            "",
        "Lists the names that -v_codec takes",
        [](MenuCommands& menu) { menu.ListVideoCodecs(); }},
    {"listMenu", "listAudioFormats", "Audio &formats",          "",
        "Lists the values that -a_setting takes, for each codec and mode",
        [](MenuCommands& menu) { menu.ListAudioFormats(); }},
    {"helpMenu", "showHelp",        "&All options",             "F1",
        "Writes every option of the command line to the output",
        [](MenuCommands& menu) { menu.ShowHelp(); }},
    {"helpMenu", "about",           "A&bout Tessivo",           "",
        "Says which version this is and under which licence it may be used",
        [](MenuCommands& menu) { menu.ShowAbout(); }},
};
// clang-format on

constexpr qsizetype kLongestEntry = 90;  // characters of a recent command in the menu

QString Text(const char* text) { return QCoreApplication::translate("WindowMenuBar", text); }

QString Entry(const QString& command) {
    QString entry = command.simplified();
    if (entry.size() > kLongestEntry)
        entry = entry.left(kLongestEntry - 1) + QChar(0x2026);  // ellipsis
    return entry.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

}  // namespace

WindowMenuBar::WindowMenuBar(MenuCommands& commands, CommandEdit& command, RecentCommands& recent,
                             QWidget* parent)
    : QMenuBar(parent), commands_(commands), command_(command), recent_(recent) {
    setObjectName(QStringLiteral("menuBar"));
    setAccessibleName(Text("Menus"));
    for (const auto& [menu_name, title] : kMenus) {
        QMenu& menu = Menu(menu_name, Text(title));
        for (const MenuRow& row : kRows) {
            if (row.menu != std::string_view(menu_name)) continue;
            if (row.run == nullptr) {
                menu.addSeparator();
                continue;
            }
            QAction* const action = menu.addAction(Text(row.text));
            connect(action, &QAction::triggered, this, [this, run = row.run] { run(commands_); });
            action->setObjectName(QLatin1String(row.name));
            action->setShortcut(QKeySequence(QLatin1String(row.shortcut)));
            action->setStatusTip(Text(row.tip));
        }
    }
    // Grey only while the menu is open: the shortcut always answers, with the reason if need be.
    auto* const file_menu = findChild<QMenu*>(QLatin1String("fileMenu"));
    auto* const new_session = findChild<QAction*>(QLatin1String("newSession"));
    auto* const repair = findChild<QAction*>(QLatin1String("repairFile"));
    connect(file_menu, &QMenu::aboutToShow, this, [this, new_session, repair] {
        new_session->setEnabled(!commands_.IsBusy());
        repair->setEnabled(commands_.CanRepair());
    });
    connect(file_menu, &QMenu::aboutToHide, new_session,
            [new_session] { new_session->setEnabled(true); });
    QMenu& profiles = *findChild<QMenu*>(QLatin1String("listMenu"))->addMenu(Text("&Profiles"));
    profiles.setObjectName(QStringLiteral("profilesMenu"));
    profiles.setAccessibleName(Text("Profiles"));
    profiles.menuAction()->setStatusTip(Text("Puts a profile into the command"));
    connect(&profiles, &QMenu::aboutToShow, this, [this, &profiles] { FillProfiles(profiles); });
    auto* const recent_menu = findChild<QMenu*>(QLatin1String("recentMenu"));
    connect(recent_menu, &QMenu::aboutToShow, this,
            [this, recent_menu] { FillRecent(*recent_menu); });
}

QMenu& WindowMenuBar::Menu(const char* name, const QString& title) {
    QMenu* const menu = addMenu(title);
    menu->setObjectName(QLatin1String(name));
    menu->setAccessibleName(QString(title).remove(QLatin1Char('&')));
    return *menu;
}

void WindowMenuBar::FillProfiles(QMenu& menu) {
    menu.clear();
    for (const CommandWord& profile : commands_.WordsAfter("-profile").words) {
        const QString code = QString::fromStdString(profile.word);
        QAction* const action =
            menu.addAction(code + QLatin1Char('\t') + QString::fromStdString(profile.note), this,
                           [this, code] { command_.PutOption("-profile", code); });
        action->setStatusTip(Text("Puts this profile into the command"));
    }
}

void WindowMenuBar::FillRecent(QMenu& menu) {
    menu.clear();
    const QStringList& commands = recent_.List();
    for (auto command = commands.rbegin(); command != commands.rend(); ++command) {
        QAction* const action = menu.addAction(Entry(*command), this,
                                               [this, whole = *command] { command_.Offer(whole); });
        action->setStatusTip(Text("Puts this command into the box, to be changed or run"));
    }
    if (commands.isEmpty()) menu.addAction(Text("No commands yet"))->setEnabled(false);
    menu.addSeparator();
    QAction* const clear =
        menu.addAction(Text("&Clear this list"), this, [this] { recent_.Clear(); });
    clear->setObjectName(QStringLiteral("clearRecent"));
    clear->setStatusTip(Text("Forgets the recent commands, here and on the arrow keys"));
    clear->setEnabled(!commands.isEmpty());
}

}  // namespace platform::host
