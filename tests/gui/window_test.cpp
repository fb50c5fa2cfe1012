// The window itself: keys, pane, names, sizes, closing.
#include "gui/window_fixture.h"

#include <QAccessible>
#include <QMessageBox>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextLayout>
#include <QTimer>
#include <algorithm>
#include <thread>

namespace window_test {
namespace {

using platform::MousePointer;
using platform::host::OutputView;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(Window, TypedTextAndEnterReachTheForm) {
    auto& command = Find<QLineEdit>("txtCmd");
    EXPECT_EQ(QApplication::focusWidget(), &command);
    for (const char c : std::string("-a b"))
        Press(command, 0, Qt::NoModifier, QString(QLatin1Char(c)));
    EXPECT_EQ(window().txtCmd().Text(), "-a b");
    EXPECT_THAT(form_.calls, IsEmpty());
    Press(command, Qt::Key_Return);
    Press(command, Qt::Key_Enter);
    EXPECT_THAT(form_.calls, ElementsAre("key 13", "key 13"));
    EXPECT_EQ(window().Arguments(), "-input a.avi");
}

TEST_F(Window, ButtonsWorkByClickEnterAndMnemonic) {
    Find<QPushButton>("cmdGo").click();
    Press(Find<QPushButton>("cmdGo"), Qt::Key_Return);
    Find<QPushButton>("cmdStop").click();
    EXPECT_THAT(form_.calls, ElementsAre("go", "go", "stop"));
    EXPECT_EQ(window().cmdGo().Caption(), "&Go");
    EXPECT_EQ(Find<QPushButton>("cmdGo").shortcut(), QKeySequence(Qt::ALT | Qt::Key_G));
    EXPECT_EQ(Find<QPushButton>("cmdStop").shortcut(), QKeySequence(Qt::ALT | Qt::Key_S));
    window().cmdGo().SetCaption("&Run");
    EXPECT_EQ(Find<QPushButton>("cmdGo").shortcut(), QKeySequence(Qt::ALT | Qt::Key_R));
    EXPECT_EQ(Find<QPushButton>("cmdGo").accessibleName(), "Run");
}

TEST_F(Window, ThePaneKeepsEveryLineAndShowsTheLast) {
    auto& view = Find<OutputView>("txtInfo");
    std::string expected;
    for (int i = 0; i < 3000; ++i) {
        const std::string line = "line " + std::to_string(i) + "\t<b>&amp;\r\n";
        expected += line;
        window().txtInfo().AppendText(line);
        window().txtInfo().ScrollToEnd();
    }
    EXPECT_EQ(window().txtInfo().Text(), expected);
    EXPECT_EQ(view.verticalScrollBar()->value(), view.verticalScrollBar()->maximum());
    EXPECT_GT(view.verticalScrollBar()->maximum(), 2000);
    EXPECT_TRUE(view.isReadOnly());

    window().resize(window().minimumSize());
    QCoreApplication::processEvents();
    EXPECT_EQ(view.verticalScrollBar()->value(), view.verticalScrollBar()->maximum());

    window().txtInfo().SetText("");
    EXPECT_EQ(window().txtInfo().Text(), "");
}

TEST_F(Window, AppendingLeavesTheSelectionAlone) {
    auto& view = Find<OutputView>("txtInfo");
    window().txtInfo().SetText("first\r\nsecond\r\n");
    QTextCursor cursor = view.textCursor();
    cursor.setPosition(0);
    cursor.setPosition(5, QTextCursor::KeepAnchor);
    view.setTextCursor(cursor);
    window().txtInfo().AppendText("third\r\n");
    EXPECT_EQ(view.textCursor().selectedText(), "first");
}

TEST_F(Window, ALineWithoutRoomGoesOnBelow) {
    auto& view = Find<OutputView>("txtInfo");
    const auto widest_line = [&] {
        const QTextLayout& layout = *view.document()->firstBlock().layout();
        qreal widest = 0;
        for (int i = 0; i < layout.lineCount(); ++i)
            widest = std::max(widest, layout.lineAt(i).naturalTextWidth());
        return widest;
    };
    for (const std::string& text : {"word " + std::string(400, 'x'), std::string(400, 'x')}) {
        window().txtInfo().SetText(text + "\r\n");
        QCoreApplication::processEvents();
        EXPECT_LE(widest_line(), view.viewport()->width());
        EXPECT_EQ(view.horizontalScrollBar()->maximum(), 0);
        EXPECT_EQ(window().txtInfo().Text(), text + "\r\n");
    }
}

TEST_F(Window, TabsStandAtEveryEighthCharacter) {
    auto& view = Find<OutputView>("txtInfo");
    view.setPlainText("\tx\n12345678x\n1234567\tx");
    const auto left_of_x = [&](int position) {
        QTextCursor cursor(view.document());
        cursor.setPosition(position);
        return view.cursorRect(cursor).left();
    };
    EXPECT_EQ(left_of_x(1), left_of_x(11));
    EXPECT_EQ(left_of_x(21), left_of_x(11));
}

TEST_F(Window, LabelsShowTheCaptionAsPlainText) {
    window().lblStatus().SetCaption("  Running... Pass:  1 \\ 2");
    EXPECT_EQ(window().lblStatus().Caption(), "  Running... Pass:  1 \\ 2");
    EXPECT_EQ(Find<QLabel>("lblStatus").text(), "  Running... Pass:  1 \\ 2");
    window().Label2().SetCaption("Expected bit rate: \r\n350 Kbps");
    EXPECT_EQ(Find<QLabel>("Label2").text(), "Expected bit rate: \n350 Kbps");
    window().lblFile().SetCaption("  Encoding: <b>a&amp;b.avi");
    EXPECT_EQ(Find<QLabel>("lblFile").text(), "  Encoding: <b>a&amp;b.avi");
    EXPECT_EQ(Find<QLabel>("lblFile").textFormat(), Qt::PlainText);

    const std::string long_name = "  Encoding: /" + std::string(400, 'x') + "/end.avi";
    window().lblFile().SetCaption(long_name);
    EXPECT_EQ(window().lblFile().Caption(), long_name);
    EXPECT_TRUE(Find<QLabel>("lblFile").text().endsWith("end.avi"));
    EXPECT_EQ(Find<QLabel>("lblFile").toolTip().toStdString(), long_name.substr(2));
}

TEST_F(Window, TheBarFollowsItsRange) {
    auto& bar = Find<QProgressBar>("pb1");
    const auto part = [&] { return double(bar.value()) / bar.maximum(); };
    window().pb1().SetMax(100);
    window().pb1().SetMin(0);
    window().pb1().SetValue(42);
    EXPECT_EQ(window().pb1().Value(), 42);
    EXPECT_DOUBLE_EQ(part(), 0.42);
    window().pb1().SetMax(84);
    EXPECT_DOUBLE_EQ(part(), 0.5);
    window().pb1().SetValue(1000);
    EXPECT_DOUBLE_EQ(part(), 1);
}

TEST_F(Window, EveryControlHasAnAccessibleName) {
    for (QWidget* widget : window().findChildren<QWidget*>()) {
        if (widget->objectName().isEmpty() || widget->objectName().startsWith("qt_")) continue;
        QAccessibleInterface* spoken = QAccessible::queryAccessibleInterface(widget);
        ASSERT_NE(spoken, nullptr);
        EXPECT_FALSE(spoken->text(QAccessible::Name).isEmpty())
            << widget->objectName().toStdString();
    }
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&window())->role(), QAccessible::Window);
    window().lblStatus().SetCaption("  Done.");
    EXPECT_EQ(Find<QLabel>("lblStatus").accessibleName(), "Status: Done.");
    window().Label1().SetCaption("Elapsed time: \r\n12 secs");
    EXPECT_EQ(Find<QLabel>("Label1").accessibleName(), "Elapsed time: 12 secs");
}

TEST_F(Window, NothingOverlapsOrIsCutAtTheSmallestSize) {
    window().lblStatus().SetCaption("Change parameters, then press Go.  (Help is above)");
    window().lblFile().SetCaption("  Encoding: /" + std::string(300, 'x') + ".avi");
    window().lblETm().SetCaption("Media Length: 90000.125 secs");
    window().lblprgs().SetCaption("100%");
    window().Label1().SetCaption("Elapsed time: \r\n32767 secs");
    window().Label2().SetCaption("Expected bit rate: \r\n32767 Kbps");
    window().Label3().SetCaption("Current bit rate: \r\n32767 Kbps");
    window().resize(1, 1);
    QCoreApplication::processEvents();
    EXPECT_LE(window().width(), 640);
    EXPECT_LE(window().height(), 420);

    QList<QWidget*> all = window().findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    all.removeIf([](const QWidget* widget) { return widget->isHidden(); });
    for (QWidget* widget : all) {
        const std::string name = widget->objectName().toStdString();
        EXPECT_TRUE(window().rect().contains(widget->geometry())) << name;
        EXPECT_GE(widget->width(), widget->minimumSizeHint().width()) << name;
        EXPECT_GE(widget->height(), widget->minimumSizeHint().height()) << name;
        for (QWidget* other : all)
            EXPECT_TRUE(widget == other || !widget->geometry().intersects(other->geometry()))
                << name << " and " << other->objectName().toStdString();
    }
    EXPECT_EQ(Find<QLabel>("lblStatus").text(),
              "Change parameters, then press Go.  (Help is above)");
    EXPECT_GE(Find<OutputView>("txtInfo").height(), 100);
}

TEST_F(Window, TheBusyPointerLeavesTheButtonsUsable) {
    window().SetMousePointer(MousePointer::Hourglass);
    EXPECT_EQ(window().cursor().shape(), Qt::BusyCursor);
    Find<QPushButton>("cmdStop").click();
    EXPECT_THAT(form_.calls, ElementsAre("stop"));
    window().SetMousePointer(MousePointer::Default);
    EXPECT_EQ(window().cursor().shape(), Qt::ArrowCursor);
    EXPECT_EQ(Find<OutputView>("txtInfo").viewport()->cursor().shape(), Qt::IBeamCursor);
}

TEST_F(Window, ClosesAtOnceWhenIdle) {
    EXPECT_TRUE(window().close());
    EXPECT_THAT(form_.calls, ElementsAre("unload"));
}

TEST_F(Window, KeepsRunningWhenTheQuestionIsDeclined) {
    form_.busy = true;
    EXPECT_FALSE(window().close());
    auto& question = Find<QMessageBox>("question");
    EXPECT_TRUE(question.isVisible());
    question.findChild<QPushButton*>("keepRunning")->click();
    EXPECT_FALSE(question.isVisible());
    EXPECT_TRUE(window().isVisible());
    EXPECT_THAT(form_.calls, IsEmpty());
    // Asked anew the next time.
    EXPECT_FALSE(window().close());
    EXPECT_TRUE(Find<QMessageBox>("question").isVisible());
}

TEST_F(Window, StopsAndWaitsForTheFileBeforeItCloses) {
    form_.busy = true;
    bool waited = false;
    form_.on_stop = [&] {
        // The encoder finishes later; until then the window must stay and answer.
        window().Loop().Post([&] {
            EXPECT_TRUE(window().isVisible());
            EXPECT_FALSE(window().close());
            waited = true;
            form_.busy = false;
        });
    };
    window().close();
    Find<QMessageBox>("question").findChild<QPushButton*>("stopAndClose")->click();
    EXPECT_FALSE(Find<QPushButton>("cmdGo").isEnabled());
    RunUntil([&] { return !window().isVisible(); });
    EXPECT_TRUE(waited);
    EXPECT_THAT(form_.calls, ElementsAre("stop", "unload"));
}

TEST_F(Window, ClosingEndsAFolderWalkThatWaitsInTheLoop) {
    form_.busy = true;
    bool file_done = false;
    form_.on_stop = [&] { window().Loop().Post([&] { file_done = true; }); };
    window().Loop().Post([&] {
        window().close();
        Find<QMessageBox>("question").findChild<QPushButton*>("stopAndClose")->click();
        RunUntil([&] { return file_done; });  // the walk, below the window's own loop
        form_.busy = false;
    });
    RunUntil([&] { return !window().isVisible(); });
    EXPECT_THAT(form_.calls, ElementsAre("stop", "unload"));
}

TEST_F(Window, ASignalClosesWithoutAskingAndWithoutBoxes) {
    form_.busy = true;
    form_.on_stop = [&] { window().Loop().Post([&] { form_.busy = false; }); };
    bool box_closed = false;
    window().Loop().Post([&] {
        window().MessageBox("text", "title", platform::MessageIcon::Critical);
        box_closed = true;
    });
    QTimer::singleShot(0, &window(), [&] { window().EndUnattended(); });
    RunUntil([&] { return !window().isVisible(); });
    EXPECT_TRUE(box_closed);
    EXPECT_EQ(window().findChild<QMessageBox*>("question"), nullptr);
    EXPECT_THAT(form_.calls, ElementsAre("stop", "unload"));
}

TEST_F(Window, ASignalStopsAgainWhatGoesOn) {
    form_.busy = true;
    form_.on_stop = [&, stops = 0]() mutable { form_.busy = ++stops < 2; };
    window().EndUnattended();
    window().EndUnattended();
    RunUntil([&] { return !window().isVisible(); });
    EXPECT_THAT(form_.calls, ElementsAre("stop", "stop", "unload"));
}

TEST_F(Window, MessageBoxesShowTheTextAsItIs) {
    QString title;
    QString text;
    QTimer::singleShot(0, &window(), [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        title = box->windowTitle();
        text = box->text();
        EXPECT_EQ(box->icon(), QMessageBox::Critical);
        box->button(QMessageBox::Ok)->click();
    });
    window().MessageBox("<i>one\r\ntwo", "ERROR:  File Access", platform::MessageIcon::Critical);
    EXPECT_EQ(title, "ERROR:  File Access");
    EXPECT_EQ(text, "<i>one\ntwo");
}

TEST_F(Window, PostedTasksKeepTheirOrderAndStopAtTheAwaitedOne) {
    std::vector<int> order;
    std::thread other([&] {
        for (int i = 0; i < 100; ++i) window().Loop().Post([&order, i] { order.push_back(i); });
    });
    RunUntil([&] { return order.size() == 10; });
    EXPECT_EQ(order.size(), 10U);
    RunUntil([&] { return order.size() == 100; });
    other.join();
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    RunUntil([] { return true; });
}

TEST_F(Window, TicksComeInsideATickThatRunsTheLoop) {
    int ticks = 0;
    int depth = 0;
    bool nested = false;
    form_.on_tick = [&] {
        ++ticks;
        ++depth;
        nested = nested || depth > 1;
        if (depth == 1) RunUntil([&] { return ticks >= 3; });
        --depth;
    };
    window().Timer1().SetInterval(1);
    window().Timer1().SetEnabled(true);
    RunUntil([&] { return ticks >= 3; });
    EXPECT_TRUE(nested);
    window().Timer1().SetEnabled(false);
    const int before = ticks;
    QCoreApplication::processEvents();
    EXPECT_EQ(ticks, before);
}

}  // namespace
}  // namespace window_test
