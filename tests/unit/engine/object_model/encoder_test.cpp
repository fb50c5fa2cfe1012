#include "engine/object_model/encoder.h"
#include "engine/object_model/profile.h"
#include "platform/host/console_loop.h"
#include "unit/engine/object_model/fake_engine.h"

namespace engine {
namespace {

using platform::EncoderState;
using platform::SourceType;
using test_support::ErrorNumber;
using test_support::ErrorOf;
using test_support::FakeEngine;
using test_support::FakeEventLoop;
using test_support::FakeRun;
using test_support::FakeShare;

class Listener : public platform::WMEncoderEvents {
  public:
    void OnStateChange(EncoderState state) override {
        log.push_back("state " + std::to_string(static_cast<int>(state)));
        if (on_state) on_state(state);
    }
    void OnError(std::int32_t number, const std::string& description) override {
        log.push_back("error " + std::to_string(number) + " " + description);
    }
    platform::CredentialsAnswer OnCredentials(
        const platform::CredentialsQuestion& question) override {
        return on_credentials(question);
    }
    std::vector<std::string> log;
    std::function<void(EncoderState)> on_state;
    std::function<platform::CredentialsAnswer(const platform::CredentialsQuestion&)> on_credentials;
};

class EncoderTest : public testing::Test {
  protected:
    EncoderTest() { SetUpSession(); }

    void SetUpSession() {
        const auto group = encoder->SourceGroupCollection().Add("SG_1");
        group->AutoSetFileSource("film.avi");
        Profile profile;
        test_support::FillProfile(profile);
        group->SetProfile(profile);
        encoder->File().SetLocalFileName("out.wmv");
        encoder->SetEvents(&listener);
    }
    FakeRun::Record& Run() { return *engine.runs.back(); }
    void RunThrough() {
        for (const EncoderState state :
             {EncoderState::Running, EncoderState::Stopping, EncoderState::Stopped})
            Run().callbacks.on_state(state);
    }

    FakeEngine engine;
    FakeEventLoop loop;
    Listener listener;
    std::shared_ptr<Encoder> encoder = std::make_shared<Encoder>(loop, engine.Parts());
};

TEST_F(EncoderTest, EventsArriveThroughTheLoopInOrder) {
    listener.on_state = [&](EncoderState state) {
        EXPECT_EQ(encoder->RunState(), state) << "the state is visible with its event";
    };
    encoder->PrepareToEncode(true);
    EXPECT_TRUE(engine.runs.empty()) << "prepare opens nothing";
    encoder->Start();
    EXPECT_EQ(Run().starts, 1);
    EXPECT_EQ(Run().plan.FilePath(), "/home/out.wmv");
    EXPECT_EQ(encoder->RunState(), EncoderState::Starting);

    Run().callbacks.on_state(EncoderState::Running);
    Run().callbacks.on_error(-2147024784, "disk full");
    Run().callbacks.on_state(EncoderState::Stopping);
    Run().callbacks.on_state(EncoderState::Stopped);
    EXPECT_TRUE(listener.log.empty()) << "nothing comes from the run's threads";
    loop.RunUntil([&] { return encoder->RunState() == EncoderState::Stopped; });
    EXPECT_EQ(listener.log, (std::vector<std::string>{"state 2", "error -2147024784 disk full",
                                                      "state 4", "state 5"}))
        << "who waits for the stopped state has seen its event";
}

TEST_F(EncoderTest, WhatIsRecordedIsOpenedByPrepare) {
    encoder->SourceGroupCollection().Remove("SG_1");
    const auto group = encoder->SourceGroupCollection().Add("SG_1");
    group->AddSource(SourceType::Audio)->SetInput("Default_Audio_Device", "device");
    Profile profile;
    test_support::FillProfile(profile);
    profile.SetContentType(platform::kContentAudio);
    group->SetProfile(profile);

    encoder->PrepareToEncode(true);
    ASSERT_EQ(engine.runs.size(), 1U);
    encoder->PrepareToEncode(true);
    ASSERT_EQ(engine.runs.size(), 2U);
    EXPECT_TRUE(engine.runs.front()->destroyed) << "a device can be opened by one only";
    EXPECT_EQ(encoder->RunState(), EncoderState::Stopped);
    encoder->Stop();
    EXPECT_TRUE(engine.runs.back()->destroyed) << "stopped before it was started";
    engine.on_make_run = [] { throw platform::Error(platform::kBusy, "Microphone"); };
    EXPECT_EQ(ErrorNumber([&] { encoder->PrepareToEncode(true); }), platform::kBusy);
    engine.on_make_run = nullptr;
    encoder->Start();
    EXPECT_EQ(engine.runs.size(), 3U) << "start prepares what failed to prepare";
    EXPECT_EQ(Run().starts, 1);
    EXPECT_EQ(engine.device_questions, 1) << "numbers hold as long as the encoder";
}

// Lets the person do something once the program waits.
class WaitingLoop : public platform::host::ConsoleLoop {
  public:
    void RunUntil(const std::function<bool()>& done) override {
        if (on_wait) on_wait();
        ConsoleLoop::RunUntil(done);
    }
    std::function<void()> on_wait;
};

TEST_F(EncoderTest, AScreenIsAskedForOnceAndStopIsAnAnswer) {
    struct Case {
        const char* why;
        std::function<void(Encoder&, FakeShare&)> person;
        std::uint32_t number;
    };
    const Case cases[] = {
        {"agrees", [](Encoder&, FakeShare& share) { share.answer.set_value(true); }, 0},
        {"declines", [](Encoder&, FakeShare& share) { share.answer.set_value(false); },
         platform::kAccessDenied},
        {"stops", [](Encoder& asking, FakeShare&) { asking.Stop(); }, platform::kAccessDenied},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        FakeEngine desktop;
        desktop.screen_access = ScreenAccess::Portal;
        WaitingLoop waiting;
        Encoder asking(waiting, desktop.Parts());
        const auto group = asking.SourceGroupCollection().Add("SG_1");
        group->AddSource(SourceType::Video)->SetInput("screencap1", "screencap");
        Profile profile;
        test_support::FillProfile(profile);
        profile.SetContentType(platform::kContentVideo);
        group->SetProfile(profile);

        EXPECT_EQ(ErrorNumber([&] { asking.PrepareToEncode(true); }), platform::kInvalidArgument);
        EXPECT_TRUE(desktop.shares.empty()) << "nobody is asked for what cannot be anyway";
        asking.File().SetLocalFileName("out.wmv");
        waiting.on_wait = [&] {
            EXPECT_EQ(asking.RunState(), EncoderState::Starting);
            EXPECT_EQ(ErrorNumber([&] { asking.Start(); }), platform::kBusy);
            c.person(asking, *desktop.shares.back());
        };
        EXPECT_EQ(ErrorNumber([&] { asking.PrepareToEncode(true); }), c.number);
        EXPECT_EQ(asking.RunState(), EncoderState::Stopped);
        ASSERT_EQ(desktop.runs.size(), c.number == 0 ? 1U : 0U);
        if (c.number != 0) continue;
        asking.Start();
        const EncodePlan& plan = desktop.runs.back()->plan;
        EXPECT_EQ(desktop.shares.size(), 1U);
        EXPECT_EQ(plan.video->input.capture->share.get(), desktop.shares.back());
        EXPECT_EQ(desktop.shares.back()->asked_rate, plan.video->expected_rate);
        EXPECT_EQ(plan.video->width, 800);
        EXPECT_EQ(plan.video->height, 602);
    }
}

TEST_F(EncoderTest, WhoPushesIsAskedWhileTheRunIsMade) {
    encoder->Broadcast().SetServerName("media");
    encoder->Broadcast().SetPublishingPoint("live");
    for (const bool stops : {false, true}) {
        SCOPED_TRACE(stops);
        listener.on_credentials = [&](const platform::CredentialsQuestion& question) {
            EXPECT_EQ(question.server, "media/live");
            EXPECT_EQ(encoder->RunState(), EncoderState::Starting);
            EXPECT_EQ(ErrorNumber([&] { encoder->PrepareToEncode(true); }), platform::kBusy);
            if (stops) encoder->Stop();
            EXPECT_EQ(question.wanted(), !stops);
            return platform::Credentials{"anna", "secret"};
        };
        platform::CredentialsAnswer answer;
        engine.on_plan = [&](const EncodePlan& plan) {
            answer = std::get<PushOutput>(plan.outputs.front()).ask({"media/live"});
            throw platform::Error(platform::kAccessDenied, "not let in");
        };
        EXPECT_EQ(ErrorNumber([&] { encoder->Start(); }), platform::kAccessDenied);
        EXPECT_EQ(answer->user, "anna");
        EXPECT_EQ(encoder->RunState(), EncoderState::Stopped);
    }
}

TEST_F(EncoderTest, NoEventAfterTheListenerIsTakenAway) {
    encoder->Start();
    RunThrough();
    encoder->SetEvents(nullptr);
    loop.RunAll();
    EXPECT_TRUE(listener.log.empty());
    EXPECT_EQ(encoder->RunState(), EncoderState::Stopped);
}

TEST_F(EncoderTest, DestructionEndsTheRunAndItsEvents) {
    encoder->Start();
    Run().callbacks.on_state(EncoderState::Running);
    encoder.reset();
    EXPECT_TRUE(Run().destroyed) << "the run's own end waits for the whole file";
    Run().callbacks.on_state(EncoderState::Stopped);
    loop.RunAll();
    EXPECT_TRUE(listener.log.empty());
}

TEST_F(EncoderTest, AListenerMayDropTheEncoder) {
    encoder->Start();
    listener.on_state = [&](EncoderState state) {
        if (state == EncoderState::Running) encoder.reset();
    };
    RunThrough();
    loop.RunAll();
    EXPECT_EQ(listener.log, std::vector<std::string>{"state 2"});
    EXPECT_TRUE(Run().destroyed);
}

TEST_F(EncoderTest, AListenerMayStartTheNextRun) {
    encoder->Start();
    listener.on_state = [&](EncoderState state) {
        if (state == EncoderState::Stopped && engine.runs.size() < 2) encoder->Start();
    };
    RunThrough();
    loop.RunAll();
    ASSERT_EQ(engine.runs.size(), 2U);
    EXPECT_TRUE(engine.runs.front()->destroyed);
    EXPECT_EQ(encoder->RunState(), EncoderState::Starting);
}

TEST_F(EncoderTest, UnpreparedStartFailsWithPreparesError) {
    encoder->File().SetLocalFileName("");
    const platform::Error prepare = ErrorOf([&] { encoder->PrepareToEncode(true); });
    const platform::Error start = ErrorOf([&] { encoder->Start(); });
    EXPECT_EQ(prepare.unsigned_number(), platform::kInvalidArgument);
    EXPECT_EQ(start.number(), prepare.number());
    EXPECT_EQ(start.description(), prepare.description());
    EXPECT_TRUE(engine.runs.empty());
}

TEST_F(EncoderTest, PreparesAgainOnlyWhenForced) {
    encoder->PrepareToEncode(false);
    encoder->File().SetLocalFileName("later.wmv");
    encoder->PrepareToEncode(false);
    encoder->Start();
    EXPECT_EQ(Run().plan.FilePath(), "/home/out.wmv");
    RunThrough();
    loop.RunAll();
    encoder->Start();
    EXPECT_EQ(Run().plan.FilePath(), "/home/later.wmv") << "each start needs its own prepare";
}

TEST_F(EncoderTest, AFailedStartLeavesNothingRunning) {
    const auto fail = [] { throw platform::Error(platform::kAccessDenied, "out.wmv"); };
    engine.on_make_run = fail;
    EXPECT_EQ(ErrorNumber([&] { encoder->Start(); }), platform::kAccessDenied);
    EXPECT_EQ(encoder->RunState(), EncoderState::Stopped);
    engine.on_make_run = nullptr;
    engine.on_start = [&] {
        Run().callbacks.on_state(EncoderState::Starting);
        fail();
    };
    EXPECT_EQ(ErrorNumber([&] { encoder->Start(); }), platform::kAccessDenied);
    loop.RunAll();
    EXPECT_TRUE(listener.log.empty()) << "events of a run that failed to start are dropped";
    EXPECT_EQ(encoder->RunState(), EncoderState::Stopped);
    EXPECT_TRUE(Run().destroyed);
}

TEST_F(EncoderTest, StartLetsAPausedRunGoOn) {
    encoder->Pause();
    EXPECT_TRUE(loop.tasks.empty()) << "nothing runs";
    encoder->Start();
    encoder->Pause();
    encoder->Pause();
    EXPECT_EQ(Run().pauses, 1);
    Run().callbacks.on_state(EncoderState::Paused);
    loop.RunAll();
    EXPECT_EQ(ErrorNumber([&] { encoder->PrepareToEncode(true); }), platform::kBusy);
    encoder->Start();
    encoder->Start();
    EXPECT_EQ(Run().resumes, 1) << "the second comes before its state";
    Run().callbacks.on_state(EncoderState::Running);
    loop.RunAll();
    EXPECT_EQ(ErrorNumber([&] { encoder->Start(); }), platform::kBusy);
    encoder->Pause();
    encoder->Stop();
    RunThrough();
    loop.RunAll();
    encoder->Start();
    EXPECT_EQ(engine.runs.size(), 2U) << "what was paused is over";
}

TEST_F(EncoderTest, StopReachesOnlyARun) {
    encoder->Stop();
    EXPECT_TRUE(loop.tasks.empty());
    encoder->Start();
    encoder->Stop();
    EXPECT_EQ(Run().stops, 1);
    RunThrough();
    loop.RunAll();
    encoder->Stop();
    EXPECT_EQ(Run().stops, 1);
}

TEST_F(EncoderTest, StatisticsAreTheLastRuns) {
    platform::WMEncStatistics& statistics = encoder->Statistics();
    EXPECT_EQ(statistics.EncodingTime().Raw(), 0);
    EXPECT_EQ(statistics.StreamOutputStats(SourceType::Audio, 0, 0).average_bit_rate_bps, 0);
    EXPECT_EQ(ErrorNumber([&] { statistics.FileArchiveStats(); }), platform::kFileNotFound);

    encoder->SourceGroupCollection().Item(0)->Profile()->SetContentType(platform::kContentAudio);
    encoder->Start();
    Run().audio.average_bit_rate_bps = 64000;
    RunThrough();
    loop.RunAll();
    EXPECT_EQ(statistics.EncodingTime().Raw(), 1234);
    EXPECT_EQ(statistics.StreamOutputStats(SourceType::Audio, 0, 0).average_bit_rate_bps, 64000);
    EXPECT_EQ(statistics.FileArchiveStats().file_size.Raw(), 4321);
    for (const auto& [type, stream, output] :
         {std::tuple(SourceType::Video, 0, 0), std::tuple(SourceType::Audio, 1, 0),
          std::tuple(SourceType::Audio, 0, 1), std::tuple(SourceType::Script, 0, 0)})
        EXPECT_EQ(ErrorNumber([&] { statistics.StreamOutputStats(type, stream, output); }),
                  platform::kInvalidArgument);
}

}  // namespace
}  // namespace engine
