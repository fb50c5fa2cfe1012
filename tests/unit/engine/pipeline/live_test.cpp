// Recordings from sources that give what the test says: where they begin and end, what a still
// screen leaves, and what is there when a device goes.
#include <gtest/gtest.h>

#include <future>
#include <thread>

#include "engine/outputs/make_output.h"
#include "support/clips.h"
#include "unit/engine/pipeline/fake_devices.h"
#include "unit/engine/pipeline/session.h"

namespace {

using namespace engine;
using fake_devices::Script;

// A screen and a microphone, recorded to `out.wmv`.
class Live : public testing::Test {
  protected:
    EncodePlan Both() {
        EncodePlan plan = VideoOnly();
        plan.audio = session::Microphone();
        return plan;
    }
    EncodePlan VideoOnly() {
        EncodePlan plan = session::Plan(folder_.Path("out.wmv"));
        plan.video = session::Screen();
        return plan;
    }
    /// @param end_ms  on the capture clock: when the stop comes
    RunParts Parts(std::int64_t end_ms) {
        return {MakeOutput, fake_devices::Opening(screen_, microphone_),
                [end_ms] { return Ticks::FromMilliseconds(end_ms); }};
    }
    session::Outcome Record(const EncodePlan& plan, std::int64_t end_ms) {
        return session::Run(
            plan,
            [&](EncodingRun& run) {
                screen_->WaitUntilTaken();
                if (plan.audio) microphone_->WaitUntilTaken();
                run.Stop();
            },
            Parts(end_ms));
    }

    clips::Folder folder_;
    std::shared_ptr<Script> screen_ = std::make_shared<Script>();
    std::shared_ptr<Script> microphone_ = std::make_shared<Script>();
};

constexpr int kBlack = 0;
constexpr int kWhite = 255;

struct StartCase {
    const char* why;
    int video_ms, audio_ms;  // when each starts
    int mark_in_ms;
    std::vector<double> events;
};

// Each source goes on until 5 s; there is a flash and a click at 2 s and at 4 s.
const StartCase kStartCases[] = {
    // why                                     video    audio  mark  events
    {"together", 1000, 1000, 0, {1, 3}},
    {"the audio starts later", 1000, 1500, 0, {1, 3}},
    {"the video starts later", 1800, 1000, 0, {0.2, 2.2}},
    {"a mark counts from the first frame", 1000, 1500, 1200, {1.8}},
};

TEST_F(Live, BeginsWithTheFirstFrame) {
    for (const StartCase& row : kStartCases) {
        SCOPED_TRACE(row.why);
        screen_ = std::make_shared<Script>();
        microphone_ = std::make_shared<Script>();
        for (int ms = row.video_ms; ms < 5000; ms += 200)
            screen_->Frame(ms, ms == 2000 || ms == 4000 ? kWhite : kBlack);
        for (int ms = row.audio_ms; ms < 5000; ms += 100)
            microphone_->Audio(ms, ms == 2000 || ms == 4000);
        EncodePlan plan = Both();
        for (InputPlan* input : {&plan.audio->input, &plan.video->input})
            input->mark_in = Ticks::FromMilliseconds(row.mark_in_ms);
        const session::Outcome outcome = Record(plan, 5000);
        EXPECT_TRUE(outcome.errors.empty()) << outcome.error_text;
        EXPECT_EQ(clips::DecodeMessages(plan.FilePath()), "");
        const clips::Contents contents = clips::Decode(plan.FilePath());
        for (const std::vector<double>& found :
             {clips::Flashes(contents), clips::Clicks(contents)}) {
            ASSERT_EQ(found.size(), row.events.size());
            for (std::size_t i = 0; i < found.size(); ++i)
                EXPECT_NEAR(found[i], row.events[i], 0.02);
        }
        const double start_s = (row.video_ms + row.mark_in_ms) / 1000.0;
        EXPECT_NEAR(contents.duration, 5 - start_s, 0.15);
        EXPECT_EQ(outcome.video.dropped_sample_count.Raw(), 0);
    }
}

TEST_F(Live, AStillScreenIsAsLongAsItWasRecorded) {
    for (const int frames : {1, 2}) {
        screen_ = std::make_shared<Script>();
        for (int i = 0; i < frames; ++i) screen_->Frame(1000 + i * 700);
        EncodePlan plan = VideoOnly();
        const session::Outcome outcome = Record(plan, 6000);
        EXPECT_TRUE(outcome.errors.empty()) << outcome.error_text;
        const clips::Contents contents = clips::Decode(plan.FilePath());
        EXPECT_NEAR(contents.duration, 5.0, 0.01);
        EXPECT_EQ(contents.frames.size(), static_cast<std::size_t>(frames) + 1);
    }
}

TEST_F(Live, AStillScreenHoldsNoAudioBack) {
    screen_->Frame(1000);
    for (int ms = 1000; ms < 9000; ms += 100) microphone_->Audio(ms);
    EncodePlan plan = Both();
    session::Run(
        plan,
        [&](EncodingRun& run) {
            while (run.Figures().EncodingTime().Raw() < 6000) std::this_thread::yield();
            run.Stop();
        },
        Parts(9000));
    EXPECT_NEAR(clips::Decode(plan.FilePath()).duration, 8, 0.1);
}

TEST_F(Live, TheScreenMayChangeItsSize) {
    screen_->Frame(1000, kBlack, 320, 240);
    screen_->Frame(1500, kWhite, 640, 400);
    screen_->Frame(2000, kBlack, 200, 301);
    EncodePlan plan = VideoOnly();
    Record(plan, 2500);
    EXPECT_EQ(clips::DecodeMessages(plan.FilePath()), "");
    const clips::Contents contents = clips::Decode(plan.FilePath());
    EXPECT_EQ(contents.width, 320);
    ASSERT_EQ(contents.frames.size(), 4U);
    EXPECT_GT(contents.frames[1].luma, 200);
    EXPECT_LT(contents.frames[2].luma, 40);
}

TEST_F(Live, ADeviceThatGoesLeavesAWholeFile) {
    struct Case {
        const char* why;
        bool video;  // is what goes
    };
    for (const Case& row : {Case{"the audio", false}, Case{"the video", true}}) {
        SCOPED_TRACE(row.why);
        screen_ = std::make_shared<Script>();
        microphone_ = std::make_shared<Script>();
        for (int ms = 1000; ms < 4000; ms += 200) screen_->Frame(ms);
        for (int ms = 1000; ms < 4000; ms += 100) microphone_->Audio(ms);
        const EncodePlan plan = Both();
        const session::Outcome outcome = session::Run(
            plan,
            [&](EncodingRun&) {
                screen_->WaitUntilTaken();
                microphone_->WaitUntilTaken();
                (row.video ? screen_ : microphone_)
                    ->Fail({platform::kFileNotFound, "The device X is gone: plug it in again"});
            },
            Parts(4000));
        ASSERT_EQ(outcome.errors.size(), 1U);
        EXPECT_EQ(outcome.errors[0], platform::kFileNotFound);
        EXPECT_NE(outcome.error_text.find("The device X is gone"), std::string::npos);
        EXPECT_NE(outcome.error_text.find(plan.FilePath()), std::string::npos);
        EXPECT_FALSE(std::filesystem::exists(plan.FilePath() + ".part"));
        EXPECT_EQ(clips::DecodeMessages(plan.FilePath()), "");
        EXPECT_NEAR(clips::Decode(plan.FilePath()).duration, 3, 0.15);
    }
}

TEST_F(Live, ADeviceThatGivesNothingLeavesNothing) {
    screen_->Fail({platform::kFileNotFound, "The screen is gone"});
    const EncodePlan plan = VideoOnly();
    const session::Outcome outcome = session::Run(plan, {}, Parts(1000));
    ASSERT_EQ(outcome.errors.size(), 1U);
    EXPECT_EQ(outcome.error_text, "The screen is gone");
    EXPECT_FALSE(std::filesystem::exists(plan.FilePath()));
    EXPECT_FALSE(std::filesystem::exists(plan.FilePath() + ".part"));
}

TEST_F(Live, ARunThatHasStoppedHoldsNoDevice) {
    screen_->Frame(1000);
    std::promise<int> open_devices;
    RunCallbacks callbacks;
    callbacks.on_state = [&](platform::EncoderState state) {
        if (state == platform::EncoderState::Stopped) open_devices.set_value(screen_->open_devices);
    };
    EncodingRun run(VideoOnly(), std::move(callbacks), Parts(2000));
    EXPECT_EQ(screen_->open_devices, 1);
    run.Start();
    screen_->WaitUntilTaken();
    run.Stop();
    EXPECT_EQ(open_devices.get_future().get(), 0);
}

TEST_F(Live, LostFramesAreCountedByCause) {
    for (int ms = 1000; ms < 3000; ms += 100) screen_->Frame(ms);
    screen_->Miss(3);
    const EncodePlan plan = VideoOnly();
    const session::Outcome outcome = Record(plan, 3000);
    EXPECT_EQ(outcome.video.drops.capture_late, 3);
    EXPECT_EQ(outcome.video.drops.encoder_late, 0);
    EXPECT_EQ(outcome.video.dropped_sample_count.Raw(), 3);
    EXPECT_EQ(outcome.total.drops.capture_late, 3);
    EXPECT_EQ(outcome.video.sample_count.Raw(), 20);
}

}  // namespace
