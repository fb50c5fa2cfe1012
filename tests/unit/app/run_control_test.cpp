// Stop, pause and another Go while a run is under way, and who hears of it.
#include "unit/app/main_window_fixture.h"

namespace app {
namespace {

using platform::EncoderState;
using platform::ExitStatus;
using testing::IsEmpty;

TEST_F(MainWindowTest, StopBeforeAnyGoDoesNothing) {
    form.Form_Load();
    window.log->lines.clear();
    form.cmdStop_Click();
    EXPECT_THAT(window.log->lines, IsEmpty());
    EXPECT_TRUE(window.timer.enabled);
}

TEST_F(MainWindowTest, StopEndsTheRunGracefullyAndMayComeTwice) {
    Go(kCommand);
    Encoder().Deliver(EncoderState::Running);
    form.cmdStop_Click();
    EXPECT_EQ(window.status.caption, "Stopped by user.");
    EXPECT_FALSE(window.timer.enabled);
    EXPECT_TRUE(form.IsBusy()) << "its file is not finished yet";
    form.cmdStop_Click();
    EXPECT_EQ(factory.log->Count("Encoder.Stop"), 2);
    Finish();
    EXPECT_EQ(window.status.caption, "  Done.");
    EXPECT_EQ(window.percent.caption, "100%");
    EXPECT_EQ(PaneCount(kCompleted), 1);
    EXPECT_FALSE(form.IsBusy());
    form.cmdStop_Click();
    EXPECT_EQ(window.status.caption, "Stopped by user.");
    EXPECT_EQ(form.Status(), ExitStatus::Done);
}

TEST_F(MainWindowTest, PausesTheRunAndLetsItGoOn) {
    form.PauseOrResume();
    Go(kCommand);
    Encoder().Deliver(EncoderState::Running);
    form.PauseOrResume();
    EXPECT_EQ(factory.log->Count("Encoder.Pause"), 1);
    Encoder().Deliver(EncoderState::Paused);
    EXPECT_EQ(form.Progress().state, EncoderState::Paused);
    EXPECT_TRUE(window.timer.enabled);
    form.PauseOrResume();
    EXPECT_EQ(Started(), 2);
    factory.log->Fail("Encoder.Pause", platform::kUnspecified, "asked for");
    form.PauseOrResume();
    EXPECT_EQ(Pane().back(), "Error: 0x80004005 - asked for");
    Encoder().Deliver(EncoderState::Paused);
    form.cmdStop_Click();
    Finish();
    form.PauseOrResume();
    EXPECT_EQ(Started(), 2) << "nothing runs any more";
    EXPECT_EQ(PaneCount(kCompleted), 1);
}

TEST_F(MainWindowTest, AHostHearsOfStatesAndOfTheEnd) {
    NotingListener listener;
    form.SetRunListener(&listener);
    Go(kCommand);
    Encoder().Deliver(EncoderState::Running);
    Encoder().Deliver(EncoderState::Paused);
    Go("-input a.avi -output out/b.wmv");
    EXPECT_EQ(std::exchange(listener.heard, {}), (Lines{"state 2", "state 3", "state 5"}))
        << "the first run is let go of";
    Encoder().Deliver(EncoderState::Running);
    form.cmdStop_Click();
    Finish();
    EXPECT_EQ(std::exchange(listener.heard, {}), (Lines{"state 2", "end 2", "state 5"}));
    Go("-a_codecs -silent");
    Go("-bogus command");
    EXPECT_THAT(listener.heard, IsEmpty()) << "nothing was encoded";
    form.SetRunListener(nullptr);
}

}  // namespace
}  // namespace app
