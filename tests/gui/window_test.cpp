// The window over a form that only records what it is told.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QMessageBox>
#include <QScrollBar>
#include <QTimer>
#include <algorithm>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "platform/host/qt_window.h"

namespace {

using platform::MousePointer;
using platform::host::OutputView;
using platform::host::QtWindow;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class RecordingForm : public platform::FormEvents {
  public:
    void Form_Load() override { calls.emplace_back("load"); }
    void Form_Unload() override { calls.emplace_back("unload"); }
    void cmdGo_Click() override { calls.emplace_back("go"); }
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
    void RunCommand(const std::vector<std::string>& /*words*/) override {}
    bool IsBusy() const override { return busy; }
    int ExitStatus() const override { return 0; }

    std::vector<std::string> calls;
    bool busy = false;
    std::function<void()> on_stop;
    std::function<void()> on_tick;
};

class Window : public testing::Test {
  protected:
    void SetUp() override {
        window_.SetForm(form_);
        window_.SetCaption("Orlavane Tessivo");
        window_.show();
        window_.activateWindow();
        QApplication::setActiveWindow(&window_);
        QCoreApplication::processEvents();
    }
    ~Window() override { form_.busy = false; }

    template <typename Widget>
    Widget& Find(const char* name) {
        return *window_.findChild<Widget*>(QLatin1String(name));
    }
    static void Press(QWidget& widget, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
                      const QString& text = {}) {
        QKeyEvent down(QEvent::KeyPress, key, modifiers, text);
        QKeyEvent up(QEvent::KeyRelease, key, modifiers, text);
        QCoreApplication::sendEvent(&widget, &down);
        QCoreApplication::sendEvent(&widget, &up);
    }
    /// Runs the window until `done`; the test's time limit ends it when that never comes.
    void RunUntil(const std::function<bool()>& done) { window_.Loop().RunUntil(done); }

    RecordingForm form_;
    QtWindow window_{"-input a.avi"};
};

TEST_F(Window, TypedTextAndEnterReachTheForm) {
    auto& command = Find<QLineEdit>("txtCmd");
    EXPECT_EQ(QApplication::focusWidget(), &command);
    for (const char c : std::string("-a b"))
        Press(command, 0, Qt::NoModifier, QString(QLatin1Char(c)));
    EXPECT_EQ(window_.txtCmd().Text(), "-a b");
    EXPECT_THAT(form_.calls, IsEmpty());
    Press(command, Qt::Key_Return);
    Press(command, Qt::Key_Enter);
    EXPECT_THAT(form_.calls, ElementsAre("key 13", "key 13"));
    EXPECT_EQ(window_.Arguments(), "-input a.avi");
}

TEST_F(Window, ButtonsWorkByClickEnterAndMnemonic) {
    Find<QPushButton>("cmdGo").click();
    Press(Find<QPushButton>("cmdGo"), Qt::Key_Return);
    Find<QPushButton>("cmdStop").click();
    EXPECT_THAT(form_.calls, ElementsAre("go", "go", "stop"));
    EXPECT_EQ(window_.cmdGo().Caption(), "&Go");
    EXPECT_EQ(Find<QPushButton>("cmdGo").shortcut(), QKeySequence(Qt::ALT | Qt::Key_G));
    EXPECT_EQ(Find<QPushButton>("cmdStop").shortcut(), QKeySequence(Qt::ALT | Qt::Key_S));
    window_.cmdGo().SetCaption("&Run");
    EXPECT_EQ(Find<QPushButton>("cmdGo").shortcut(), QKeySequence(Qt::ALT | Qt::Key_R));
    EXPECT_EQ(Find<QPushButton>("cmdGo").accessibleName(), "Run");
}

TEST_F(Window, ThePaneKeepsEveryLineAndShowsTheLast) {
    auto& view = Find<OutputView>("txtInfo");
    std::string expected;
    for (int i = 0; i < 3000; ++i) {
        const std::string line = "line " + std::to_string(i) + "\t<b>&amp;\r\n";
        expected += line;
        window_.txtInfo().AppendText(line);
        window_.txtInfo().ScrollToEnd();
    }
    EXPECT_EQ(window_.txtInfo().Text(), expected);
    EXPECT_EQ(view.verticalScrollBar()->value(), view.verticalScrollBar()->maximum());
    EXPECT_GT(view.verticalScrollBar()->maximum(), 2000);
    EXPECT_TRUE(view.isReadOnly());

    window_.resize(window_.minimumSize());
    QCoreApplication::processEvents();
    EXPECT_EQ(view.verticalScrollBar()->value(), view.verticalScrollBar()->maximum());

    window_.txtInfo().SetText("");
    EXPECT_EQ(window_.txtInfo().Text(), "");
}

TEST_F(Window, AppendingLeavesTheSelectionAlone) {
    auto& view = Find<OutputView>("txtInfo");
    window_.txtInfo().SetText("first\r\nsecond\r\n");
    QTextCursor cursor = view.textCursor();
    cursor.setPosition(0);
    cursor.setPosition(5, QTextCursor::KeepAnchor);
    view.setTextCursor(cursor);
    window_.txtInfo().AppendText("third\r\n");
    EXPECT_EQ(view.textCursor().selectedText(), "first");
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
    window_.lblStatus().SetCaption("  Running... Pass:  1 \\ 2");
    EXPECT_EQ(window_.lblStatus().Caption(), "  Running... Pass:  1 \\ 2");
    EXPECT_EQ(Find<QLabel>("lblStatus").text(), "Running... Pass:  1 \\ 2");
    window_.Label2().SetCaption("Expected bit rate: \r\n350 Kbps");
    EXPECT_EQ(Find<QLabel>("Label2").text(), "Expected bit rate: \n350 Kbps");
    window_.lblFile().SetCaption("  Encoding: <b>a&amp;b.avi");
    EXPECT_EQ(Find<QLabel>("lblFile").text(), "Encoding: <b>a&amp;b.avi");
    EXPECT_EQ(Find<QLabel>("lblFile").textFormat(), Qt::PlainText);

    const std::string long_name = "  Encoding: /" + std::string(400, 'x') + "/end.avi";
    window_.lblFile().SetCaption(long_name);
    EXPECT_EQ(window_.lblFile().Caption(), long_name);
    EXPECT_TRUE(Find<QLabel>("lblFile").text().endsWith("end.avi"));
    EXPECT_EQ(Find<QLabel>("lblFile").toolTip().toStdString(), long_name.substr(2));
}

TEST_F(Window, TheBarFollowsItsRange) {
    auto& bar = Find<QProgressBar>("pb1");
    const auto part = [&] { return double(bar.value()) / bar.maximum(); };
    window_.pb1().SetMax(100);
    window_.pb1().SetMin(0);
    window_.pb1().SetValue(42);
    EXPECT_EQ(window_.pb1().Value(), 42);
    EXPECT_DOUBLE_EQ(part(), 0.42);
    window_.pb1().SetMax(84);
    EXPECT_DOUBLE_EQ(part(), 0.5);
    window_.pb1().SetValue(1000);
    EXPECT_DOUBLE_EQ(part(), 1);
}

TEST_F(Window, EveryControlHasAnAccessibleName) {
    for (QWidget* widget : window_.findChildren<QWidget*>()) {
        if (widget->objectName().isEmpty() || widget->objectName().startsWith("qt_")) continue;
        QAccessibleInterface* spoken = QAccessible::queryAccessibleInterface(widget);
        ASSERT_NE(spoken, nullptr);
        EXPECT_FALSE(spoken->text(QAccessible::Name).isEmpty())
            << widget->objectName().toStdString();
    }
    window_.lblStatus().SetCaption("  Done.");
    EXPECT_EQ(Find<QLabel>("lblStatus").accessibleName(), "Status: Done.");
    window_.Label1().SetCaption("Elapsed time: \r\n12 secs");
    EXPECT_EQ(Find<QLabel>("Label1").accessibleName(), "Elapsed time: 12 secs");
}

TEST_F(Window, NothingOverlapsOrIsCutAtTheSmallestSize) {
    window_.lblStatus().SetCaption("Change parameters, then press Go.  (Help is above)");
    window_.lblFile().SetCaption("  Encoding: /" + std::string(300, 'x') + ".avi");
    window_.lblETm().SetCaption("Media Length: 90000.125 secs");
    window_.lblprgs().SetCaption("100%");
    window_.Label1().SetCaption("Elapsed time: \r\n32767 secs");
    window_.Label2().SetCaption("Expected bit rate: \r\n32767 Kbps");
    window_.Label3().SetCaption("Current bit rate: \r\n32767 Kbps");
    window_.resize(1, 1);
    QCoreApplication::processEvents();
    EXPECT_LE(window_.width(), 640);
    EXPECT_LE(window_.height(), 420);

    const QList<QWidget*> all =
        window_.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    for (QWidget* widget : all) {
        const std::string name = widget->objectName().toStdString();
        EXPECT_TRUE(window_.rect().contains(widget->geometry())) << name;
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
    window_.SetMousePointer(MousePointer::Hourglass);
    EXPECT_EQ(window_.cursor().shape(), Qt::BusyCursor);
    Find<QPushButton>("cmdStop").click();
    EXPECT_THAT(form_.calls, ElementsAre("stop"));
    window_.SetMousePointer(MousePointer::Default);
    EXPECT_EQ(window_.cursor().shape(), Qt::ArrowCursor);
    EXPECT_EQ(Find<OutputView>("txtInfo").viewport()->cursor().shape(), Qt::IBeamCursor);
}

TEST_F(Window, ClosesAtOnceWhenIdle) {
    EXPECT_TRUE(window_.close());
    EXPECT_THAT(form_.calls, ElementsAre("unload"));
}

TEST_F(Window, KeepsRunningWhenTheQuestionIsDeclined) {
    form_.busy = true;
    EXPECT_FALSE(window_.close());
    auto& question = Find<QMessageBox>("question");
    EXPECT_TRUE(question.isVisible());
    question.findChild<QPushButton*>("keepRunning")->click();
    EXPECT_FALSE(question.isVisible());
    EXPECT_TRUE(window_.isVisible());
    EXPECT_THAT(form_.calls, IsEmpty());
    // Asked anew the next time.
    EXPECT_FALSE(window_.close());
    EXPECT_TRUE(Find<QMessageBox>("question").isVisible());
}

TEST_F(Window, StopsAndWaitsForTheFileBeforeItCloses) {
    form_.busy = true;
    bool waited = false;
    form_.on_stop = [&] {
        // The encoder finishes later; until then the window must stay and answer.
        window_.Loop().Post([&] {
            EXPECT_TRUE(window_.isVisible());
            EXPECT_FALSE(window_.close());
            waited = true;
            form_.busy = false;
        });
    };
    window_.close();
    Find<QMessageBox>("question").findChild<QPushButton*>("stopAndClose")->click();
    EXPECT_FALSE(Find<QPushButton>("cmdGo").isEnabled());
    RunUntil([&] { return !window_.isVisible(); });
    EXPECT_TRUE(waited);
    EXPECT_THAT(form_.calls, ElementsAre("stop", "unload"));
}

TEST_F(Window, ClosingEndsAFolderWalkThatWaitsInTheLoop) {
    form_.busy = true;
    bool file_done = false;
    form_.on_stop = [&] { window_.Loop().Post([&] { file_done = true; }); };
    window_.Loop().Post([&] {
        window_.close();
        Find<QMessageBox>("question").findChild<QPushButton*>("stopAndClose")->click();
        RunUntil([&] { return file_done; });  // the walk, below the window's own loop
        form_.busy = false;
    });
    RunUntil([&] { return !window_.isVisible(); });
    EXPECT_THAT(form_.calls, ElementsAre("stop", "unload"));
}

TEST_F(Window, ASignalClosesWithoutAskingAndWithoutBoxes) {
    form_.busy = true;
    form_.on_stop = [&] { window_.Loop().Post([&] { form_.busy = false; }); };
    bool box_closed = false;
    window_.Loop().Post([&] {
        window_.MessageBox("text", "title", platform::MessageIcon::Critical);
        box_closed = true;
    });
    QTimer::singleShot(0, &window_, [&] { window_.EndUnattended(); });
    RunUntil([&] { return !window_.isVisible(); });
    EXPECT_TRUE(box_closed);
    EXPECT_EQ(window_.findChild<QMessageBox*>("question"), nullptr);
    EXPECT_THAT(form_.calls, ElementsAre("stop", "unload"));
}

TEST_F(Window, MessageBoxesShowTheTextAsItIs) {
    QString title;
    QString text;
    QTimer::singleShot(0, &window_, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        title = box->windowTitle();
        text = box->text();
        EXPECT_EQ(box->icon(), QMessageBox::Critical);
        box->button(QMessageBox::Ok)->click();
    });
    window_.MessageBox("<i>one\r\ntwo", "ERROR:  File Access", platform::MessageIcon::Critical);
    EXPECT_EQ(title, "ERROR:  File Access");
    EXPECT_EQ(text, "<i>one\ntwo");
}

TEST_F(Window, PostedTasksKeepTheirOrderAndStopAtTheAwaitedOne) {
    std::vector<int> order;
    std::thread other([&] {
        for (int i = 0; i < 100; ++i) window_.Loop().Post([&order, i] { order.push_back(i); });
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
    window_.Timer1().SetInterval(1);
    window_.Timer1().SetEnabled(true);
    RunUntil([&] { return ticks >= 3; });
    EXPECT_TRUE(nested);
    window_.Timer1().SetEnabled(false);
    const int before = ticks;
    QCoreApplication::processEvents();
    EXPECT_EQ(ticks, before);
}

}  // namespace
