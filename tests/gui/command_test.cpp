// What Go and Enter do around the form: questions, messages, figures.
#include <QAbstractItemView>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>

#include "gui/window_fixture.h"
#include "platform/host/qt_hotkey_dialog.h"
#include "platform/host/qt_message_line.h"

namespace window_test {
namespace {

using platform::CommandEnd;
using platform::CommandReport;
using platform::EncoderState;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Commands : public Window {
  protected:
    QMessageBox* Question() {
        auto* const box = window().findChild<QMessageBox*>(QStringLiteral("question"));
        return box != nullptr && box->isVisible() ? box : nullptr;
    }
    void Answer(const char* button) {
        Question()->findChild<QPushButton*>(QLatin1String(button))->click();
    }
    void Type(const char* command) { window().txtCmd().SetText(command); }
    void PressGo() { Find<QPushButton>("cmdGo").click(); }
    void PressEnter() { Press(Find<QLineEdit>("txtCmd"), Qt::Key_Return); }
    platform::host::MessageLine& Line() { return Find<platform::host::MessageLine>("messageLine"); }
    /// "" while there is none.
    std::string Message() { return Line().isVisible() ? Line().Text().toStdString() : ""; }
    void Refuse(const std::string& error, const std::string& hint = "") {
        CommandReport report;
        report.last.end = CommandEnd::Refused;
        report.last.error = {0, error};
        report.hint = hint;
        report.carried_over = form_.report.carried_over;
        form_.listener->OnCommandRefused(report);
    }
};

TEST_F(Commands, ARunIsReplacedOnlyWhenThePersonSaysSo) {
    struct Case {
        const char* why;
        bool busy;
        const char* command;
        bool asked;
    };
    for (const Case& c : {Case{"nothing runs", false, "-input a.avi", false},
                          Case{"a run would end", true, "-input a.avi", true},
                          Case{"an empty box runs the program's words", true, "", true},
                          Case{"one word shows the help", true, "-help", false}}) {
        SCOPED_TRACE(c.why);
        for (const bool by_enter : {false, true}) {
            const char* const call = by_enter ? "key 13" : "go";
            form_.busy = c.busy;
            form_.calls.clear();
            Type(c.command);
            by_enter ? PressEnter() : PressGo();
            ASSERT_EQ(Question() != nullptr, c.asked);
            if (c.asked) {
                EXPECT_THAT(form_.calls, IsEmpty());
                Press(*Question(), Qt::Key_Return);
                EXPECT_EQ(Question(), nullptr) << "Enter keeps the run";
                EXPECT_THAT(form_.calls, IsEmpty());
                by_enter ? PressEnter() : PressGo();
                Answer("stopAndRun");
            }
            EXPECT_THAT(form_.calls, ElementsAre(call));
        }
    }
}

TEST_F(Commands, AFailureStandsInTheMessageLineUntilTheNextGo) {
    Type("-input a.avi -bogus");
    PressGo();
    EXPECT_EQ(Message(), "");
    Refuse("Invalid parameter: -bogus", "Did you mean -profile?");
    EXPECT_EQ(Message(), "Invalid parameter: -bogus. Did you mean -profile?");
    EXPECT_TRUE(Line().HasError());
    const auto& label = *Line().findChild<QLabel*>(QStringLiteral("message"));
    EXPECT_NE(label.palette().color(QPalette::WindowText),
              window().palette().color(QPalette::WindowText));
    EXPECT_THAT(label.toolTip().toStdString(), HasSubstr("-input a.avi -bogus"));
    Line().ShowNote(QStringLiteral("a note"));
    EXPECT_THAT(Message(), HasSubstr("Invalid parameter"));
    PressGo();
    EXPECT_EQ(Message(), "");

    CommandReport report;
    for (const CommandEnd end : {CommandEnd::Completed, CommandEnd::Stopped}) {
        report.last.end = end;
        form_.listener->OnCommandEnd(report);
        EXPECT_EQ(Message(), "");
    }
    report.last.end = CommandEnd::Failed;
    report.last.error = {platform::kDiskFull, "the disk is full"};
    form_.listener->OnCommandEnd(report);
    EXPECT_EQ(Message(), "the disk is full.");
}

TEST_F(Commands, BlanksThatMakeEmptyWordsAreNamed) {
    struct Case {
        const char* command;
        const char* named;
    };
    for (const Case& c : {Case{"-a  b", "two blanks in a row"}, Case{"-a b ", "a blank at the end"},
                          Case{" -a b", "a blank at the beginning"}, Case{"-a b", ""}}) {
        SCOPED_TRACE(c.command);
        Type(c.command);
        PressEnter();
        Refuse("Invalid parameter: ");
        EXPECT_THAT(Message(), HasSubstr(c.named));
        EXPECT_EQ(Message().find("blank") == std::string::npos, *c.named == '\0');
    }
}

TEST_F(Commands, WhatIsStillInForceIsNamed) {
    Type("-input b.avi");
    PressGo();
    form_.report.carried_over = {"-audioonly", "-output lesson.wmv"};
    form_.listener->OnStateChange(EncoderState::Running);
    EXPECT_THAT(Message(), HasSubstr("-audioonly, -output lesson.wmv"));
    EXPECT_THAT(Message(), HasSubstr("New session"));
    EXPECT_FALSE(Line().HasError());
    Refuse("two sources");
    EXPECT_THAT(Message(), HasSubstr("two sources. Still in force: -audioonly"));
    window().findChild<QAction*>(QStringLiteral("newSession"))->trigger();
    EXPECT_EQ(Message(), "");
}

TEST_F(Commands, NoticesOfTheRunStandTogether) {
    Type("-input b.avi");
    PressGo();
    form_.report.notices = {"The pixels are not square."};
    form_.listener->OnNotice(form_.report.notices.back());
    EXPECT_EQ(Message(), "The pixels are not square.");
    form_.report.carried_over = {"-audioonly"};
    form_.listener->OnStateChange(EncoderState::Running);
    EXPECT_THAT(Message(), HasSubstr("not square. Still in force: -audioonly"));
    EXPECT_FALSE(Line().HasError());
}

TEST_F(Commands, FiguresOfTheRunBeforeAreCleared) {
    const auto fill = [this] {
        window().pb1().SetValue(100);
        window().lblprgs().SetCaption("100%");
        window().Label1().SetCaption("Elapsed time: \r\n12 secs");
        window().lblFile().SetCaption("  Encoding: a.avi");
    };
    fill();
    Type("-input b.avi");
    PressGo();
    EXPECT_EQ(window().pb1().Value(), 0);
    for (const char* name : {"lblprgs", "Label1", "Label2", "Label3", "lblFile", "lblETm"})
        EXPECT_EQ(Find<QLabel>(name).text(), "") << name;
    fill();
    form_.busy = true;
    Type("-help");
    PressGo();
    EXPECT_EQ(Find<QLabel>("lblprgs").text(), "100%") << "of a run that goes on";
}

TEST_F(Commands, AfterStopInTheFirstPassTheSecondIsToldOf) {
    form_.busy = true;
    form_.progress.passes = 2;
    form_.progress.encoded_ms = 40'000;
    Find<QPushButton>("cmdStop").click();
    EXPECT_THAT(Message(), HasSubstr("second pass follows"));
    form_.progress.encoded_ms = 10'000;
    RunUntil([this] { return Message().find("25%") != std::string::npos; });
    form_.busy = false;
    RunUntil([this] { return Message().empty(); });

    form_.busy = true;
    for (const auto& [pass, passes] : {std::pair{2, 2}, std::pair{1, 1}}) {
        form_.progress.pass = pass;
        form_.progress.passes = passes;
        Find<QPushButton>("cmdStop").click();
        EXPECT_EQ(Message(), "") << pass << " of " << passes;
    }
}

TEST_F(Commands, TheTimeThatIsLeftStandsBesideThePercentage) {
    auto& left = Find<QLabel>("timeLeft");
    form_.progress.state = EncoderState::Running;
    form_.progress.length_ms = 3'600'000;
    form_.on_tick = [this] { form_.progress.encoded_ms += 100; };
    form_.listener->OnStateChange(EncoderState::Running);
    window().Timer1().SetInterval(20);
    window().Timer1().SetEnabled(true);
    RunUntil([&] { return left.text().endsWith(QLatin1String(" left")); });
    window().Timer1().SetEnabled(false);
    Find<QPushButton>("cmdStop").click();
    EXPECT_EQ(left.text(), "");
}

TEST_F(Commands, WordsThatCanFollowAreOffered) {
    auto& box = Find<platform::host::CommandEdit>("txtCmd");
    QAbstractItemView& list = *box.Completer().popup();
    const auto type = [&](const char* text) {
        for (const char c : std::string(text))
            Press(box, 0, Qt::NoModifier, QString(QLatin1Char(c)));
    };
    type("-pr");
    ASSERT_TRUE(list.isVisible());
    Press(list, Qt::Key_Down);
    Press(list, Qt::Key_Return);
    EXPECT_EQ(box.text(), "-profile") << "no blank behind it, which would be a word";
    EXPECT_THAT(form_.calls, IsEmpty());
    type(" ");
    EXPECT_EQ(list.model()->rowCount(), 2) << "all that can follow";
    type("av3");
    ASSERT_TRUE(list.isVisible());
    EXPECT_EQ(list.model()->rowCount(), 1);
    Press(list, Qt::Key_Return);
    EXPECT_THAT(form_.calls, ElementsAre("key 13")) << "nothing was chosen";
    type(" xyz");
    EXPECT_FALSE(list.isVisible());
}

TEST_F(Commands, TheProgramsNameIsDropped) {
    for (const char* const name :
         {"tessivo-console ", "tessivo ", "$ tessivo-console  ", "build/release/bin/tessivo "}) {
        Type((name + std::string("-input tessivo -silent")).c_str());
        PressGo();
        EXPECT_EQ(window().txtCmd().Text(), "-input tessivo -silent");
    }
}

TEST_F(Commands, PastedCommandsRunOneAfterAnother) {
    auto& box = Find<QLineEdit>("txtCmd");
    auto& queue = Find<QPlainTextEdit>("queuedCommands");
    EXPECT_FALSE(queue.isVisible());
    const auto paste = [&](const char* text) {
        QGuiApplication::clipboard()->setText(QString::fromLatin1(text));
        box.paste();
    };
    paste(
        "# a loop\ntessivo-console -input a.avi -output a.wmv\n"
        "tessivo-console -input b.avi \\\n    -output b.wmv\n-input c.avi -output c.wmv\n");
    EXPECT_EQ(box.text(), "-input a.avi -output a.wmv");
    EXPECT_TRUE(queue.isVisible());
    EXPECT_EQ(queue.toPlainText(), "-input b.avi -output b.wmv\n-input c.avi -output c.wmv");

    std::vector<std::string> ran;
    form_.on_go = [&] {
        ran.push_back(window().txtCmd().Text());
        form_.busy = true;
    };
    PressGo();
    const auto end = [&] {
        form_.busy = false;
        form_.listener->OnCommandEnd({});
    };
    end();
    RunUntil([&] { return ran.size() == 2; });
    Find<QPushButton>("cmdStop").click();
    end();
    QCoreApplication::processEvents();
    EXPECT_EQ(ran.back(), "-input b.avi -output b.wmv") << "Stop halts the queue";
    EXPECT_EQ(queue.toPlainText(), "-input c.avi -output c.wmv");
}

TEST_F(Commands, TheWindowOpensWithinTheScreen) {
    const QSize room = window().screen()->availableSize();
    EXPECT_LE(window().frameSize().width(), room.width());
    EXPECT_LE(window().frameSize().height(), room.height());
}

TEST_F(Commands, TheWindowComesBackWhereItWasButWithinTheScreen) {
    const QRect room = window().screen()->availableGeometry();
    struct Case {
        const char* why;
        QPoint place;
        bool same;
    };
    for (const Case& c : {Case{"inside", room.topLeft() + QPoint(30, 20), true},
                          Case{"partly outside", room.bottomRight() - QPoint(200, 100), false},
                          Case{"above and to the left", room.topLeft() - QPoint(90, 90), false}}) {
        window().resize(600, 400);
        window().move(c.place);
        window().close();
        Open();
        EXPECT_EQ(window().size(), QSize(600, 400)) << c.why;
        EXPECT_TRUE(room.contains(window().frameGeometry())) << c.why;
        EXPECT_EQ(window().pos() == c.place, c.same) << c.why;
    }
}

TEST_F(Commands, AKeyThatCannotBeGlobalIsRefusedAndEscapeCancels) {
    QSettings settings(QStringLiteral("tessivo"), QStringLiteral("tessivo"));
    platform::host::WindowOptions options(settings);
    platform::host::HotkeyDialog dialog(options, nullptr);
    auto& pause = *dialog.findChild<QKeySequenceEdit*>(QStringLiteral("pauseKey"));
    auto& warning = *dialog.findChild<QLabel*>(QStringLiteral("hotkeyWarning"));
    auto& ok = *dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok);
    struct Case {
        const char* keys;
        bool taken;
    };
    for (const Case& c : {Case{"Ctrl+Shift+F9", true}, Case{"A", false}, Case{"Shift+A", false},
                          Case{"Ctrl+A", true}, Case{"F5", true}, Case{"Launch Mail", false},
                          Case{"", true}, Case{"Ctrl+Shift+F10", false}}) {
        pause.setKeySequence(QKeySequence(QLatin1String(c.keys)));
        EXPECT_EQ(ok.isEnabled(), c.taken) << c.keys;
        EXPECT_EQ(warning.text().isEmpty(), c.taken) << c.keys;
    }
    dialog.show();
    Press(pause, Qt::Key_Escape);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(options.Key(platform::host::Hotkey::Pause),
              platform::host::WindowOptions::UsualKey(platform::host::Hotkey::Pause));
}

}  // namespace
}  // namespace window_test
