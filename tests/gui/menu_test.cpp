// Menus, recent commands, dropped files and what the window keeps for its next start.
#include <QAbstractItemView>
#include <QAction>
#include <QClipboard>
#include <QCompleter>
#include <QDropEvent>
#include <QFile>
#include <QMimeData>
#include <QStatusTipEvent>
#include <QTemporaryDir>
#include <QUrl>
#include <algorithm>
#include <future>
#include <set>
#include <stdexcept>

#include "gui/window_fixture.h"
#include "platform/error.h"

namespace window_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Menus : public Window {
  protected:
    void Trigger(const char* name) { Find<QAction>(name).trigger(); }
    void Run(const QString& command) {
        box().setText(command);
        Press(box(), Qt::Key_Return);
    }
    QLineEdit& box() { return Find<QLineEdit>("txtCmd"); }
    std::string Walk(int key) {
        Press(box(), key);
        return box().text().toStdString();
    }
    QStringList RecentEntries() {
        auto& menu = Find<QMenu>("recentMenu");
        QMetaObject::invokeMethod(&menu, "aboutToShow");
        QStringList entries;
        for (const QAction* action : menu.actions())
            if (!action->isSeparator()) entries.append(action->text());
        return entries;
    }
    void Choose(const char* dialog_name, const QString& path) {
        auto& dialog = Find<QFileDialog>(dialog_name);
        ASSERT_TRUE(dialog.isVisible());
        dialog.setDirectory(QFileInfo(path).path());
        dialog.selectFile(QFileInfo(path).fileName());
        QMetaObject::invokeMethod(&dialog, "accept");
        QCoreApplication::processEvents();
        ASSERT_FALSE(dialog.isVisible());
    }
    /// Drags onto the widget, and drops on the window if the drag was welcome.
    bool Drop(QWidget& target, const QList<QUrl>& urls) {
        QMimeData data;
        data.setUrls(urls);
        const QPoint place = target.rect().center();
        QDragEnterEvent enter(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&target, &enter);
        if (!enter.isAccepted()) return false;
        QDropEvent drop(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&window(), &drop);
        return drop.isAccepted();
    }

    QTemporaryDir folder_;
};

TEST_F(Menus, EntriesRunTheirListing) {
    const std::pair<const char*, const char*> rows[] = {
        {"listDevices", "listing|-devices"},
        {"listAudioCodecs", "listing|-a_codecs"},
        {"listVideoCodecs", "listing|-v_codecs"},
        {"listAudioFormats", "listing|-a_formats"},
        {"showHelp", "listing|-help"},
        {"newSession", "new session"},
    };
    for (const auto& [name, call] : rows) {
        form_.calls.clear();
        Trigger(name);
        EXPECT_THAT(form_.calls, ElementsAre(call)) << name;
    }
    EXPECT_THAT(RecentEntries(), ElementsAre("No commands yet", "&Clear this list"));
}

TEST_F(Menus, MnemonicsAndShortcutsDoNotClash) {
    std::multiset<QChar> top;
    const auto mnemonic = [](const QString& text) {
        return text[text.indexOf(QLatin1Char('&')) + 1].toLower();
    };
    std::multiset<QString> shortcuts;
    RecentEntries();
    for (QMenu* menu : window().findChildren<QMenu*>()) {
        if (menu->title().isEmpty()) continue;  // the tool kit's own
        const bool is_inner = qobject_cast<QMenu*>(menu->parent()) != nullptr;
        if (!is_inner) top.insert(mnemonic(menu->title()));
        std::multiset<QChar> inside;
        for (const QAction* action : menu->actions()) {
            if (action->isSeparator() || !action->text().contains(QLatin1Char('&'))) continue;
            EXPECT_FALSE(action->statusTip().isEmpty()) << action->text().toStdString();
            inside.insert(mnemonic(action->text()));
            if (!action->shortcut().isEmpty()) shortcuts.insert(action->shortcut().toString());
        }
        for (const QChar c : inside) EXPECT_EQ(inside.count(c), 1U) << c.toLatin1();
    }
    for (const char* name : {"cmdGo", "cmdStop", "cmdPause"})
        top.insert(mnemonic(Find<QPushButton>(name).text()));
    top.insert(u'c');  // the command box
    EXPECT_EQ(top.size(), 11U);
    for (const QChar c : top) EXPECT_EQ(top.count(c), 1U) << c.toLatin1();
    EXPECT_GE(shortcuts.size(), 6U);
    for (const QString& s : shortcuts) EXPECT_EQ(shortcuts.count(s), 1U) << s.toStdString();
}

TEST_F(Menus, FileInformationTakesTheNameAsOneWord) {
    const QString path = folder_.filePath(QStringLiteral("two words.avi"));
    ASSERT_TRUE(QFile(path).open(QIODevice::WriteOnly));
    Trigger("fileInformation");
    Choose("inputFile", path);
    EXPECT_THAT(form_.calls, ElementsAre("listing|-input|" + path.toStdString()));
}

TEST_F(Menus, ProfilesAndSessionsGoIntoTheCommand) {
    const QString profile = folder_.filePath(QStringLiteral("own.prx"));
    const QString session = folder_.filePath(QStringLiteral("two words.wme"));
    for (const QString& path : {profile, session})
        ASSERT_TRUE(QFile(path).open(QIODevice::WriteOnly));
    window().txtCmd().SetText("-output a.wmv");
    Trigger("loadProfile");
    Choose("loadProfile", profile);
    Trigger("loadSession");
    Choose("loadSession", session);
    const std::string command = window().txtCmd().Text();
    EXPECT_EQ(
        command.rfind("-output a.wmv -loadprofile " + profile.toStdString() + " -wme file:", 0), 0U)
        << command;
    EXPECT_THAT(form_.calls, IsEmpty());

    Trigger("saveSession");
    Choose("saveSession", folder_.filePath(QStringLiteral("new.wme")));
    ASSERT_EQ(form_.calls.size(), 1U);
    EXPECT_EQ(form_.calls[0].rfind("listing|--save-session|" +
                                       folder_.filePath(QStringLiteral("new.wme")).toStdString() +
                                       "|-output|a.wmv|-loadprofile|",
                                   0),
              0U)
        << form_.calls[0];
}

TEST_F(Menus, ATypedNameLeavesNoListOpen) {
    ASSERT_TRUE(QFile(folder_.filePath("typed.avi")).open(QIODevice::WriteOnly));
    Trigger("fileInformation");
    auto& dialog = Find<QFileDialog>("inputFile");
    auto& name = *dialog.findChild<QLineEdit*>();
    const QString typed = folder_.filePath("typ");
    for (const QChar c : typed) {
        QKeyEvent key(QEvent::KeyPress, 0, Qt::NoModifier, QString(c));
        QCoreApplication::sendEvent(&name, &key);
    }
    RunUntil([&] { return name.completer()->popup()->isVisible(); });
    QMetaObject::invokeMethod(&dialog, "reject");
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

TEST_F(Menus, RepairWritesItsLinesAndLeavesTheWindowUsable) {
    auto& menu = Find<QMenu>("fileMenu");
    auto& action = Find<QAction>("repairFile");
    const auto enabled = [&] {
        QMetaObject::invokeMethod(&menu, "aboutToShow");
        return action.isEnabled();
    };
    EXPECT_FALSE(enabled()) << "nothing to repair with";
    std::promise<void> go_on;
    std::shared_future<void> told = go_on.get_future();
    window().SetRepair([told](const std::string& path) -> std::string {
        told.wait();
        if (path.find("bad") != std::string::npos)
            throw platform::Error(platform::kInvalidData, path + " has no header");
        if (path.find("large") != std::string::npos)
            throw std::length_error(path + " is too large");
        return path + " is whole\n";
    });
    const QString good = folder_.filePath(QStringLiteral("a b.wmv"));
    const QString bad = folder_.filePath(QStringLiteral("bad.wmv"));
    const QString large = folder_.filePath(QStringLiteral("large.wmv"));
    for (const QString& path : {good, bad, large})
        ASSERT_TRUE(QFile(path).open(QIODevice::WriteOnly));

    EXPECT_TRUE(enabled());
    action.trigger();
    Choose("repairFile", good);
    EXPECT_FALSE(enabled()) << "one at a time";
    EXPECT_EQ(window().txtInfo().Text(), "");
    go_on.set_value();
    RunUntil([&] { return !window().txtInfo().Text().empty(); });
    for (const QString& path : {bad, large}) {
        action.setEnabled(enabled());
        action.trigger();
        Choose("repairFile", path);
        RunUntil([&] { return enabled(); });
    }
    EXPECT_EQ(window().txtInfo().Text(), good.toStdString() + " is whole\r\n" + bad.toStdString() +
                                             " has no header\r\n" + large.toStdString() +
                                             " is too large\r\n");
}

TEST_F(Menus, ThePaneIsSavedAndCleared) {
    window().txtInfo().SetText("first\r\n\t\xC3\xA4\r\n");
    const QString path = folder_.filePath(QStringLiteral("out put.txt"));
    Trigger("savePane");
    Choose("saveFile", path);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), QByteArray("first\n\t\xC3\xA4\n"));
    EXPECT_EQ(window().findChild<QMessageBox*>("message"), nullptr);

    Trigger("clearPane");
    EXPECT_EQ(window().txtInfo().Text(), "");
    EXPECT_THAT(form_.calls, IsEmpty());
}

TEST_F(Menus, APaneThatCannotBeSavedIsSaid) {
    window().txtInfo().SetText("text");
    Trigger("savePane");
    auto& dialog = Find<QFileDialog>("saveFile");
    Q_EMIT dialog.fileSelected(folder_.filePath(QStringLiteral("no/such/folder.txt")));
    auto& message = Find<QMessageBox>("message");
    EXPECT_TRUE(message.isVisible());
    EXPECT_EQ(message.icon(), QMessageBox::Critical);
    EXPECT_THAT(message.informativeText().toStdString(), HasSubstr("no/such/folder.txt: "));
}

TEST_F(Menus, NewSessionIsGreyWhileBusyAndTheShortcutSaysWhy) {
    auto& menu = Find<QMenu>("fileMenu");
    auto& action = Find<QAction>("newSession");
    form_.busy = true;
    QMetaObject::invokeMethod(&menu, "aboutToShow");
    EXPECT_FALSE(action.isEnabled());
    QMetaObject::invokeMethod(&menu, "aboutToHide");
    action.trigger();
    EXPECT_TRUE(Find<QMessageBox>("message").isVisible());
    Find<QMessageBox>("message").close();
    form_.busy = false;
    QMetaObject::invokeMethod(&menu, "aboutToShow");
    EXPECT_TRUE(action.isEnabled());
}

TEST_F(Menus, QuitAsksLikeTheFramesButton) {
    form_.busy = true;
    Trigger("quit");
    EXPECT_TRUE(Find<QMessageBox>("question").isVisible());
    EXPECT_TRUE(window().isVisible());
    Find<QMessageBox>("question").close();
    form_.busy = false;
    Trigger("quit");
    EXPECT_FALSE(window().isVisible());
}

TEST_F(Menus, ArrowsWalkTheRecentCommands) {
    Run("-a 1");
    Run("-b 2");
    Run("-b 2");
    Run("   ");
    box().setText("-c dra");
    EXPECT_EQ(Walk(Qt::Key_Down), "-c dra") << "nothing is newer than what is typed";
    EXPECT_EQ(Walk(Qt::Key_Up), "-b 2");
    EXPECT_EQ(Walk(Qt::Key_Up), "-a 1") << "a repeated command is there once";
    EXPECT_EQ(Walk(Qt::Key_Up), "-a 1") << "nothing is older";
    EXPECT_EQ(Walk(Qt::Key_Down), "-b 2");
    EXPECT_EQ(Walk(Qt::Key_Down), "-c dra");
    Walk(Qt::Key_Up);
    Walk(Qt::Key_Up);
    Find<QPushButton>("cmdGo").click();
    EXPECT_EQ(Walk(Qt::Key_Up), "-a 1") << "one that is run again is the newest";
    EXPECT_EQ(Walk(Qt::Key_Up), "-b 2");
}

TEST_F(Menus, RecentCommandsOutliveTheWindow) {
    for (int i = 0; i < 40; ++i) Run(QString("-title %1").arg(i));
    Run("-title a&b");
    Open();
    const QStringList entries = RecentEntries();
    EXPECT_EQ(entries.size(), 31) << "thirty, and the entry that forgets them";
    EXPECT_EQ(entries[0], "-title a&&b");
    EXPECT_EQ(entries[29], "-title 11");
    Find<QMenu>("recentMenu").actions().first()->trigger();
    EXPECT_EQ(box().text(), "-title a&b");
    EXPECT_EQ(Walk(Qt::Key_Up), "-title a&b");

    Trigger("clearRecent");
    Open();
    EXPECT_THAT(RecentEntries(), ElementsAre("No commands yet", "&Clear this list"));
    EXPECT_EQ(Walk(Qt::Key_Up), "");
}

TEST_F(Menus, TheNextWindowHasTheSizeOfTheLast) {
    window().resize(733, 512);
    ASSERT_TRUE(window().close());
    Open();
    EXPECT_EQ(window().size(), QSize(733, 512));
}

TEST_F(Menus, WhatIsPastedStaysWholeAndBecomesOneLine) {
    struct Case {
        const char* why;
        const char* box;  // "|" is where it is pasted
        QString pasted;
        QString expected;
    };
    const QString title(40'000, QLatin1Char('x'));
    const Case cases[] = {
        // why, box, pasted, expected
        {"a line a value", "|", "\n-input a.avi\n  -output b.wmv\r\n-v_width\t320\n",
         "-input a.avi -output b.wmv -v_width 320|"},
        {"in the middle", "-a | -c", "b\nb", "-a b b| -c"},
        {"longer than a line edit takes by itself", "|", "-title " + title + " -silent",
         "-title " + title + " -silent|"},
        {"blanks are the user's", "|", "a  b ", "a  b |"},
    };
    for (const Case& each : cases) {
        const QString before = QLatin1String(each.box);
        box().setText(QString(before).remove(QLatin1Char('|')));
        box().setCursorPosition(static_cast<int>(before.indexOf(QLatin1Char('|'))));
        QGuiApplication::clipboard()->setText(each.pasted);
        box().paste();
        QString after = box().text();
        after.insert(box().cursorPosition(), QLatin1Char('|'));
        EXPECT_EQ(after.toStdString(), each.expected.toStdString()) << each.why;
    }
}

struct DropCase {
    const char* why;
    const char* box;
    const char* path;
    const char* expected;
};

TEST_F(Menus, ADroppedFileBecomesTheInput) {
    const DropCase cases[] = {
        // why, box, path, expected
        {"a plain name stays as it is", "", "/clips/a.avi", "-input /clips/a.avi"},
        {"a percent sign is no code in a plain name", "", "/c/50%25.avi", "-input /c/50%25.avi"},
        {"blanks split words", "", "/my clips/a b.avi", "-input file:///my%20clips/a%20b.avi"},
        {"signs that a URI reads", "", "/a b/5%#?.avi", "-input file:///a%20b/5%25%23%3F.avi"},
        {"a backslash separates folders", "", "/c/a\\b.avi", "-input file:///c/a%5Cb.avi"},
        {"letters beyond ASCII", "", "/\xC3\xA4 b.avi", "-input file:///%C3%A4%20b.avi"},
        {"one blank between", "-profile av100", "/a.avi", "-profile av100 -input /a.avi"},
        {"no empty word", "-profile av100 ", "/a.avi", "-profile av100 -input /a.avi"},
    };
    for (const DropCase& c : cases) {
        box().setText(c.box);
        EXPECT_TRUE(Drop(window(), {QUrl::fromLocalFile(c.path)})) << c.why;
        EXPECT_EQ(box().text().toStdString(), c.expected) << c.why;
    }
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile("/a.avi")});
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    static_cast<QObject&>(box()).event(&enter);
    EXPECT_FALSE(enter.isAccepted()) << "the box leaves it to the window";
    EXPECT_THAT(form_.calls, IsEmpty()) << "a drop runs nothing";
}

TEST_F(Menus, OtherDropsAreRefused) {
    box().setText("-a b");
    EXPECT_FALSE(Drop(window(), {QUrl("http://example.net/a.avi")}));
    EXPECT_FALSE(Drop(window(), {QUrl::fromLocalFile("/a"), QUrl::fromLocalFile("/b")}));
    EXPECT_EQ(box().text(), "-a b");
}

TEST_F(Menus, ThePointersPlaceIsExplained) {
    auto& explanation = Find<QLabel>("explanation");
    for (const char* name : {"txtCmd", "cmdGo", "cmdStop", "cmdPause", "txtInfo", "pb1", "lblprgs",
                             "lblStatus", "lblFile", "lblETm", "Label1", "Label2", "Label3"}) {
        auto& widget = Find<QWidget>(name);
        QStatusTipEvent tip(widget.statusTip());
        QCoreApplication::sendEvent(&widget, &tip);
        EXPECT_FALSE(widget.statusTip().isEmpty()) << name;
        EXPECT_EQ(widget.toolTip(), widget.statusTip()) << name;
        EXPECT_EQ(explanation.text(), widget.statusTip()) << name << ": too long for the window";
    }
}

TEST_F(Menus, ShortcutsGoToTheCommandBox) {
    Run("-a b");
    Find<QWidget>("txtInfo").setFocus();
    Trigger("goToCommand");
    EXPECT_EQ(QApplication::focusWidget(), &box());
    EXPECT_EQ(box().selectedText(), "-a b");
}

}  // namespace
}  // namespace window_test
