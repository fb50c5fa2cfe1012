// Pauses: what a recording leaves out, and a file that waits.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <numeric>

#include "engine/outputs/make_output.h"
#include "engine/pipeline/pauses.h"
#include "support/clips.h"
#include "unit/engine/pipeline/fake_devices.h"
#include "unit/engine/pipeline/session.h"

namespace {

using namespace engine;
using fake_devices::Script;
using platform::EncoderState;
using session::WatchedRun;
using States = std::vector<EncoderState>;

struct CutCase {
    const char* why;
    std::vector<std::pair<int, int>> pauses;     // tenths of a millisecond
    std::int64_t time;                           // of the first sample that is left, recorded
    std::vector<std::pair<int, int>> kept = {};  // samples, the last not among them
};

// A hundred samples of a tenth of a millisecond each, heard from 1000 on.
TEST(Pauses, CutAudioToTheSample) {
    const CutCase cases[] = {
        // why, pauses, time, kept
        {"none", {}, 1000, {{0, 100}}},
        {"one that is over", {{100, 400}}, 700, {{0, 100}}},
        {"one that comes later", {{1100, 1200}}, 1000, {{0, 100}}},
        {"the end of it", {{1040, 5000}}, 1000, {{0, 40}}},
        {"the beginning of it", {{500, 1030}}, 500, {{30, 100}}},
        {"the middle of it", {{1020, 1050}}, 1000, {{0, 20}, {50, 100}}},
        {"twice", {{1010, 1020}, {1050, 1090}}, 1000, {{0, 10}, {20, 50}, {90, 100}}},
        {"all of it", {{1000, 1100}}, 1000, {}},
        {"between two", {{900, 1020}, {1080, 2000}}, 900, {{20, 80}}},
    };
    for (const CutCase& c : cases) {
        SCOPED_TRACE(c.why);
        constexpr int kUnit = Ticks::kPerSecond / 10'000;
        Pauses pauses;
        for (const auto& [from, to] : c.pauses) {
            pauses.Begin(Ticks{from * kUnit});
            EXPECT_TRUE(pauses.IsOpen());
            pauses.End(Ticks{to * kUnit});
        }
        FramePool frames;
        const FrameHandle frame = frames.Get();
        fake_devices::FillAudio(*frame, Ticks{1000 * kUnit}, 100,
                                [](int i) { return static_cast<std::int16_t>(i); });
        frame->sample_rate = 10'000;
        std::vector<std::int16_t> expected;
        for (const auto& [from, to] : c.kept)
            for (int i = from; i < to; ++i) expected.push_back(static_cast<std::int16_t>(i));
        ASSERT_EQ(pauses.CutAudio(*frame), !expected.empty());
        const auto* samples = reinterpret_cast<const std::int16_t*>(frame->data[0]);
        EXPECT_EQ(std::vector<std::int16_t>(samples, samples + frame->nb_samples), expected);
        EXPECT_TRUE(expected.empty() || frame->pts == c.time * kUnit) << frame->pts / kUnit;
    }
}

void Pause(WatchedRun& run) {
    (*run).Pause();
    run.Until(EncoderState::Paused);
}

void Resume(WatchedRun& run) {
    (*run).Resume();
    run.Until(EncoderState::Running);
}

void Stop(WatchedRun& run) {
    (*run).Stop();
    run.Until(EncoderState::Stopped);
}

States StatesOf(WatchedRun& run) {
    const session::Outcome said = run.Said();
    EXPECT_TRUE(said.errors.empty()) << said.error_text;
    return said.states;
}

class Pausing : public testing::Test {
  protected:
    EncodePlan Recording() {
        EncodePlan plan = session::Plan(folder_.Path("out.wmv"));
        plan.audio = session::Microphone();
        plan.video = session::Screen();
        return plan;
    }
    RunParts Parts() {
        return {MakeOutput, fake_devices::Opening(screen_, microphone_),
                [this] { return Ticks::FromMilliseconds(now_ms_); }};
    }
    /// What is captured up to `ms`, all of it taken; the clock then stands there. Sound comes in
    /// tenths of a second, each once it is over.
    void RecordTo(int ms) {
        for (; heard_ms_ + 100 <= ms; heard_ms_ += 100)
            microphone_->Audio(heard_ms_, Contains(clicks_, heard_ms_));
        for (; seen_ms_ < ms; seen_ms_ += 200)
            screen_->Frame(seen_ms_, Contains(bright_, seen_ms_) ? 255 : 0);
        screen_->WaitUntilTaken();
        microphone_->WaitUntilTaken();
        now_ms_ = ms;
    }
    static bool Contains(const std::vector<int>& events, int ms) {
        return std::find(events.begin(), events.end(), ms) != events.end();
    }
    std::string Film() {
        return clips::Ffmpeg(
            "-f lavfi -i testsrc2=s=320x240:r=25 -f lavfi -i sine=440:r=44100 -t 20 -c:v mpeg4 "
            "-q:v 5 -g 25 -c:a pcm_s16le",
            folder_.Path("source.avi"));
    }
    EncodePlan OfFilm(const std::string& film, int passes) {
        EncodePlan plan = session::OfBoth(film, folder_.Path("out.wmv"));
        plan.passes = passes;
        return plan;
    }

    clips::Folder folder_;
    std::shared_ptr<Script> screen_ = std::make_shared<Script>();
    std::shared_ptr<Script> microphone_ = std::make_shared<Script>();
    int heard_ms_ = 1000;
    int seen_ms_ = 1000;
    std::vector<int> clicks_, bright_;  // when; milliseconds on the capture clock
    std::atomic<std::int64_t> now_ms_ = 1000;
};

TEST_F(Pausing, LeavesNoGapAndKeepsVideoAndAudioTogether) {
    clicks_ = {2000, 3500, 5200, 8600};
    bright_ = {2000, 3800, 4000, 5200, 8600};
    const EncodePlan plan = Recording();
    WatchedRun run(plan, Parts());
    RecordTo(2550);
    Pause(run);
    RecordTo(4050);
    Resume(run);
    RecordTo(6130);
    Pause(run);
    RecordTo(7980);
    Resume(run);
    RecordTo(9000);
    Stop(run);

    EXPECT_EQ(clips::DecodeMessages(plan.FilePath()), "");
    const clips::Contents contents = clips::Decode(plan.FilePath());
    // 2550 to 4050 and 6130 to 7980 are left out; the screen had turned bright in the first.
    const std::vector<double> flashes = {1.0, 1.55, 2.7, 4.25};
    const std::vector<double> clicks = {1.0, 2.7, 4.25};
    const auto expect_near = [](const std::vector<double>& found,
                                const std::vector<double>& expected) {
        ASSERT_EQ(found.size(), expected.size());
        for (std::size_t i = 0; i < found.size(); ++i) EXPECT_NEAR(found[i], expected[i], 0.02);
    };
    expect_near(clips::Flashes(contents), flashes);
    expect_near(clips::Clicks(contents), clicks);
    EXPECT_NEAR(contents.duration, 8 - 1.5 - 1.85, 0.05);
    EXPECT_EQ(StatesOf(run),
              (States{EncoderState::Starting, EncoderState::Running, EncoderState::Paused,
                      EncoderState::Running, EncoderState::Paused, EncoderState::Running,
                      EncoderState::Stopping, EncoderState::Stopped}));
}

TEST_F(Pausing, ARecordingMayEndPaused) {
    for (const bool stopped : {true, false}) {
        SCOPED_TRACE(stopped);
        screen_ = std::make_shared<Script>();
        microphone_ = std::make_shared<Script>();
        heard_ms_ = seen_ms_ = 1000;
        const EncodePlan plan = Recording();
        WatchedRun run(plan, Parts());
        RecordTo(3000);
        Pause(run);
        RecordTo(5000);
        if (stopped)
            Stop(run);
        else
            run.Destroy();
        EXPECT_EQ(clips::DecodeMessages(plan.FilePath()), "");
        EXPECT_NEAR(clips::Decode(plan.FilePath()).duration, 2, 0.05);
        EXPECT_EQ(StatesOf(run).back(), EncoderState::Stopped);
    }
}

TEST_F(Pausing, AFileWaitsAndGoesOn) {
    const std::string film = Film();
    for (const int passes : {1, 2}) {
        SCOPED_TRACE(passes);
        const EncodePlan plan = OfFilm(film, passes);
        EncodePlan other = plan;
        other.outputs = {FileOutput{folder_.Path("other.wmv")}};
        WatchedRun run(plan);
        Pause(run);
        session::RunCleanly(other);  // as long as this one would have taken
        EXPECT_EQ(StatesOf(run).back(), EncoderState::Paused);
        EXPECT_LT((*run).Figures().EncodingTime().Raw(), 20'000);
        Resume(run);
        run.Until(EncoderState::Stopped);
        const clips::Contents contents = clips::Decode(plan.FilePath());
        const clips::Contents expected = clips::Decode(other.FilePath());
        EXPECT_EQ(contents.frames.size(), expected.frames.size());
        EXPECT_EQ(contents.audio.size(), expected.audio.size());
    }
}

TEST_F(Pausing, AFileMayEndPaused) {
    const std::string film = Film();
    for (const bool stopped : {true, false}) {
        SCOPED_TRACE(stopped);
        const EncodePlan plan = OfFilm(film, 1);
        WatchedRun run(plan);
        while ((*run).Figures().EncodingTime().Raw() < 1000) std::this_thread::yield();
        Pause(run);
        if (stopped)
            Stop(run);
        else
            run.Destroy();
        EXPECT_EQ(StatesOf(run).back(), EncoderState::Stopped);
        EXPECT_EQ(clips::DecodeMessages(plan.FilePath()), "");
        EXPECT_GE(clips::Decode(plan.FilePath()).duration, 1);
    }
}

}  // namespace
