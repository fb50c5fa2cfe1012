#include "app/encoding_run.h"

#include "unit/app/session_fixture.h"

namespace app {
namespace {

using platform::EncoderState;
using Lines = std::vector<std::string>;

class EncodingRunTest : public SessionFixture {
  protected:
    EncodingRunTest() { run.NewSession(); }

    test_support::FakeEncoder& Encoder() { return *factory.encoders.back(); }
    Lines EncoderLog() { return factory.log->Of("Encoder."); }

    Progress progress{window, session, settings};
    StatisticsReport report{window, factory, session, settings, pane};
    EncodingRun run{window, factory,  session, settings,
                    pane,   progress, report,  [this] { return now; }};
};

TEST_F(EncodingRunTest, PreparesArmsTheTimerAndStarts) {
    AddVideo();
    video->duration = 60000;
    settings.input = "a.avi";
    EXPECT_EQ(run.Transcode(), TranscodeResult::Started);
    EXPECT_EQ(EncoderLog(), (Lines{"Encoder.PrepareToEncode(true)", "Encoder.Start"}));
    EXPECT_EQ(WindowLog(), (Lines{"Timer1.Interval=1000", "Timer1.Enabled=true", "pb1=0",
                                  "lblFile=  Encoding: a.avi", "lblETm=Media Length: 60 secs"}));
    EXPECT_TRUE(run.IsRunning());
    EXPECT_TRUE(pane.lines.empty());
}

TEST_F(EncodingRunTest, AnEndMarkPastTheEndIsClearedAndTriedOnceMore) {
    AddAudio();
    AddVideo();
    factory.log->Fail("Encoder.PrepareToEncode", platform::kEndMarkPastEnd, "past the end", 1);
    EXPECT_EQ(run.Transcode(), TranscodeResult::Started);
    EXPECT_EQ(factory.log->lines, (Lines{"Audio.MarkOut=0", "Video.MarkOut=0",
                                         "Encoder.PrepareToEncode(true)", "Encoder.Start"}));
    EXPECT_TRUE(pane.lines.empty());
}

TEST_F(EncodingRunTest, FailureToPrepareTouchesNothingOfTheWindow) {
    factory.log->Fail("Encoder.PrepareToEncode", platform::kAccessDenied, "out.wmv is locked");
    EXPECT_EQ(run.Transcode(), TranscodeResult::NotPrepared);
    EXPECT_EQ(pane.lines,
              Lines{"Prepare to encode failed with error -2147024891 out.wmv is locked"});
    EXPECT_TRUE(window.log->lines.empty());
    EXPECT_FALSE(run.IsRunning());
}

TEST_F(EncodingRunTest, FailureToStartLeavesTheTimerTicking) {
    factory.log->Fail("Encoder.Start", platform::kDiskFull, "no room");
    EXPECT_EQ(run.Transcode(), TranscodeResult::NotStarted);
    EXPECT_TRUE(window.timer.enabled);
    EXPECT_FALSE(run.IsRunning());
}

TEST_F(EncodingRunTest, OnlyARecordingWaitsForTheHost) {
    AddVideo();
    std::vector<bool> asked;
    window.before_recording = [&](bool of_screen, const std::function<bool()>& wanted) {
        EXPECT_TRUE(wanted());
        EXPECT_TRUE(run.IsRunning());
        EXPECT_FALSE(window.timer.enabled) << "what is not recorded is not counted";
        asked.push_back(of_screen);
        return true;
    };
    for (const char* scheme : {"", "screencap", "device"}) {
        video->scheme = scheme;
        EXPECT_EQ(run.Transcode(), TranscodeResult::Started);
    }
    EXPECT_EQ(asked, (std::vector<bool>{true, false}));
}

TEST_F(EncodingRunTest, WhatHappensBeforeARecordingBegins) {
    struct Case {
        const char* why;
        std::function<void()> meanwhile;
        Lines lines;
    };
    const Case cases[] = {
        {"Stop", [&] { run.Stop(); }, {"The recording was stopped before it began."}},
        {"another command", [&] { run.NewSession(); }, {}},
    };
    for (const Case& c : cases) {
        run.NewSession();
        AddVideo();
        video->scheme = "screencap";
        window.before_recording = [&](bool, const std::function<bool()>& wanted) {
            c.meanwhile();
            EXPECT_FALSE(wanted()) << c.why;
            return false;
        };
        EXPECT_EQ(run.Transcode(), TranscodeResult::NotPrepared) << c.why;
        EXPECT_EQ(pane.Take(), c.lines) << c.why;
        EXPECT_FALSE(run.IsRunning()) << c.why;
        EXPECT_THAT(EncoderLog(), testing::Not(testing::Contains("Encoder.Start"))) << c.why;
    }
}

TEST_F(EncodingRunTest, WhatHappensWhileThePersonIsAskedWhoPushes) {
    struct Case {
        const char* why;
        std::function<void()> meanwhile;  // empty: an answer
        bool ticks;                       // afterwards
        Lines lines;
    };
    const Case cases[] = {
        {"an answer", {}, true, {}},
        {"Stop", [&] { run.Stop(); }, false, {"Start encoder failed with error -2147024891 no"}},
        {"another command", [&] { run.NewSession(); }, false, {}},
    };
    for (const Case& c : cases) {
        run.NewSession();
        bool wanted = true;
        window.ask_credentials = [&](const platform::CredentialsQuestion&) {
            EXPECT_FALSE(window.timer.enabled) << c.why;
            if (c.meanwhile) c.meanwhile();
            wanted = !c.meanwhile;
            return platform::Credentials{"anna", "secret"};
        };
        Encoder().on_start = [&](test_support::FakeEncoder& started) {
            const auto answer =
                started.events->OnCredentials({"media/live", false, [&] { return wanted; }});
            EXPECT_EQ(answer->password, "secret");
            if (!wanted) throw platform::Error(platform::kAccessDenied, "no");
        };
        EXPECT_EQ(run.Transcode(),
                  c.meanwhile ? TranscodeResult::NotStarted : TranscodeResult::Started)
            << c.why;
        EXPECT_EQ(window.timer.enabled, c.ticks) << c.why;
        EXPECT_EQ(pane.Take(), c.lines) << c.why;
        EXPECT_EQ(run.IsRunning(), !c.meanwhile) << c.why;
    }
}

TEST_F(EncodingRunTest, StatesSpellTheirOwnStatus) {
    video->value_PreProcessPass = 1;
    AddVideo();
    run.Transcode();
    WindowLog();
    Encoder().Deliver(EncoderState::Starting);
    Encoder().Deliver(EncoderState::Running);
    Encoder().Deliver(EncoderState::Paused);
    Encoder().Deliver(EncoderState::EndPreprocess);
    Encoder().Deliver(EncoderState::Stopping);
    EXPECT_EQ(WindowLog(), (Lines{"lblStatus=  Running... Pass:  1 \\ 2", "MousePointer=11",
                                  "lblStatus=  Paused..."}));
    EXPECT_TRUE(window.timer.enabled);
}

TEST_F(EncodingRunTest, StoppedDoesItsStepsInOrderAndReports) {
    run.Transcode();
    WindowLog();
    now += std::chrono::seconds(7);
    window.info.scrolled = false;
    Encoder().Deliver(EncoderState::Stopped);
    EXPECT_EQ(WindowLog(),
              (Lines{"Label1=Elapsed time: \r\n0 secs", "Label2=Expected bit rate: \r\n0 Kbps",
                     "Label3=Current bit rate: \r\n0 Kbps", "lblStatus=  Done.", "MousePointer=0",
                     "pb1=100", "lblprgs=100%", "Beep", "cmdGo=&Go", "Timer1.Enabled=false"}));
    EXPECT_EQ(pane.Take(), (Lines{"======== Encoding Completed ========\r\n", "", "Overall:",
                                  "\tEncoding time: \t\t7 secs", "\tAverage bit rate: \t\t0 bps"}));
    EXPECT_TRUE(window.info.scrolled);
    EXPECT_FALSE(run.IsRunning());
    EXPECT_FALSE(run.HasFailed());

    Encoder().Deliver(EncoderState::Stopped);
    EXPECT_EQ(pane.lines.size(), 5U) << "a second stopped event repeats the whole sequence";
}

TEST_F(EncodingRunTest, SilentLeavesOutTheReportOnly) {
    settings.silent = true;
    run.Transcode();
    Encoder().Deliver(EncoderState::Stopped);
    EXPECT_EQ(pane.lines, Lines{"======== Encoding Completed ========\r\n"});
}

TEST_F(EncodingRunTest, AnErrorIsSaidAtOnceAndReplacesTheReport) {
    run.Transcode();
    Encoder().events->OnError(static_cast<std::int32_t>(platform::kDiskFull), "no room for a.wmv");
    EXPECT_EQ(pane.Take(), Lines{"Error: 0x80070070 - no room for a.wmv"});
    Encoder().Deliver(EncoderState::Stopped);
    EXPECT_EQ(pane.Take(), Lines{"Error occurred in transcoding: Error Code = 0x80070070"});
    EXPECT_TRUE(run.HasFailed());

    run.Transcode();
    Encoder().Deliver(EncoderState::Stopped);
    EXPECT_EQ(pane.lines.front(), "======== Encoding Completed ========\r\n")
        << "the next run begins without the error";
    EXPECT_FALSE(run.HasFailed());
}

TEST_F(EncodingRunTest, AReportThatCannotBeReadIsAFailure) {
    settings.output = "a.wmv";
    factory.log->Fail("Statistics.FileArchiveStats", platform::kFileNotFound, "no file");
    run.Transcode();
    Encoder().Deliver(EncoderState::Stopped);
    EXPECT_TRUE(run.HasFailed());
}

TEST_F(EncodingRunTest, ANewSessionLetsTheOldRunFinishUnheard) {
    AddAudio();
    AddVideo();
    run.Transcode();
    const std::weak_ptr<test_support::FakeEncoder> old = factory.encoders.front();
    old.lock()->Deliver(EncoderState::Running);
    factory.log->lines.clear();
    WindowLog();

    run.NewSession();
    EXPECT_EQ(EncoderLog(), Lines{"Encoder.Stop"});
    EXPECT_EQ(WindowLog(), (Lines{"MousePointer=0", "Timer1.Enabled=false"}));
    EXPECT_EQ(session.g_objEncoder, factory.encoders.back());
    EXPECT_EQ(session.g_objSrcAud, nullptr);
    EXPECT_EQ(session.g_objSrcVid, nullptr);
    EXPECT_FALSE(run.IsRunning());
    factory.encoders.erase(factory.encoders.begin());
    run.Purge();
    ASSERT_FALSE(old.expired()) << "its file is not finished yet";
    EXPECT_TRUE(run.IsFinishingOthers());

    old.lock()->Deliver(EncoderState::Stopped);
    EXPECT_TRUE(WindowLog().empty());
    EXPECT_TRUE(pane.lines.empty());
    EXPECT_FALSE(run.IsFinishingOthers());
    run.Purge();
    EXPECT_TRUE(old.expired());
}

TEST_F(EncodingRunTest, AnEncoderThatCannotBeStoppedSaysSo) {
    run.Transcode();
    factory.log->Fail("Encoder.Stop", platform::kUnspecified, "stuck");
    run.Stop();
    EXPECT_EQ(pane.lines, Lines{"Error: 0x80004005 - stuck"});
}

/// A message box that lets the user give a new command.
struct WindowWithUser : test_support::FakeWindow {
    void MessageBox(const std::string&, const std::string&, platform::MessageIcon) override {
        if (user) user();
    }
    std::function<void()> user;
};

TEST_F(EncodingRunTest, ANewSessionOutOfTheReportsBoxKeepsTheEncoderThatIsBeingHeard) {
    WindowWithUser box_window;
    StatisticsReport box_report(box_window, factory, session, settings, pane);
    EncodingRun box_run(box_window, factory, session, settings, pane, progress, box_report,
                        [this] { return now; });
    settings.output = "a.wmv";
    box_run.NewSession();
    const std::weak_ptr<test_support::FakeEncoder> old = factory.encoders.back();
    test_support::FakeEncoder& heard = Encoder();
    box_run.Transcode();
    factory.log->Fail("Statistics.FileArchiveStats", platform::kFileNotFound, "no file");
    box_window.user = [&] {
        factory.encoders.clear();
        box_run.NewSession();
        box_run.Transcode();
        box_run.Purge();
        EXPECT_FALSE(old.expired()) << "its event is still on the stack";
    };
    heard.Deliver(EncoderState::Stopped);
    EXPECT_TRUE(box_run.IsRunning()) << "the new run goes on";
    EXPECT_FALSE(box_run.HasFailed()) << "the failure was the old run's";
    box_run.Purge();
    EXPECT_TRUE(old.expired());
}

TEST_F(EncodingRunTest, WhoIsAskedWhilePreparingMayBeginAnotherSessionInstead) {
    const std::weak_ptr<test_support::FakeEncoder> old = factory.encoders.back();
    old.lock()->on_prepare = [&] {
        EXPECT_TRUE(run.IsRunning()) << "so that a signal or a closed window stops it";
        factory.encoders.clear();
        run.NewSession();
        run.Transcode();
        run.Purge();
        EXPECT_FALSE(old.expired()) << "it is still on the stack";
        throw platform::Error(platform::kAccessDenied, "nobody answered");
    };
    EXPECT_EQ(run.Transcode(), TranscodeResult::NotPrepared);
    EXPECT_TRUE(run.IsRunning()) << "the new run goes on";
    EXPECT_TRUE(pane.lines.empty()) << "the question was the old session's";
}

}  // namespace
}  // namespace app
