// What lies between a live source and the outputs: queues that never make a source wait, and a
// writer that waits for nobody long.
#include <gtest/gtest.h>

#include <thread>

#include "engine/pipeline/capture_queues.h"
#include "engine/pipeline/interleaver.h"

namespace {

using namespace engine;

constexpr MediaKind kAudio = MediaKind::Audio;
constexpr MediaKind kVideo = MediaKind::Video;

class Queues : public testing::Test {
  protected:
    bool Push(CaptureQueues& queues, MediaKind kind, std::int64_t ms) {
        FrameHandle frame = frames_.Get();
        frame->pts = Ticks::FromMilliseconds(ms).count;
        return queues.Push(kind, std::move(frame));
    }
    // Session times in milliseconds, to the end of the stream.
    std::vector<std::int64_t> Rest(CaptureQueues& queues, MediaKind kind) {
        std::vector<std::int64_t> times;
        FrameHandle frame;
        while (queues.Pop(kind, frame)) times.push_back(Ticks{frame->pts}.Milliseconds());
        return times;
    }
    FramePool frames_;
};

using Times = std::vector<std::int64_t>;

TEST_F(Queues, CountFromTheFirstFrame) {
    CaptureQueues queues(true, true);
    for (const int ms : {900, 1000, 1100}) Push(queues, kAudio, ms);
    EXPECT_FALSE(queues.Start());
    Push(queues, kVideo, 1050);
    queues.Finish(kVideo);
    queues.Finish(kAudio);
    EXPECT_EQ(Rest(queues, kVideo), Times{0});
    EXPECT_EQ(Rest(queues, kAudio), (Times{-150, -50, 50}));
}

TEST_F(Queues, CountFromTheFirstAudioWhereNoFrameComes) {
    CaptureQueues ended(true, true);
    Push(ended, kAudio, 1000);
    ended.Finish(kVideo);
    ASSERT_TRUE(ended.Start()) << "the video has ended before it began";
    EXPECT_EQ(ended.Start()->Milliseconds(), 1000);

    CaptureQueues silent(true, true);
    Push(silent, kAudio, 1000);
    Push(silent, kAudio, 5900);
    EXPECT_FALSE(silent.Start());
    Push(silent, kAudio, 6000);
    ASSERT_TRUE(silent.Start());
    EXPECT_EQ(silent.Start()->Milliseconds(), 1000);
}

TEST_F(Queues, GiveUpTheOldestFramesAndNoAudio) {
    CaptureQueues queues(true, true);
    for (int i = 0; i < 1000; ++i) Push(queues, kAudio, i * 100);
    for (int i = 0; i < 50; ++i) Push(queues, kVideo, i * 100);
    queues.Finish(kVideo);
    queues.Finish(kAudio);
    const Times frames = Rest(queues, kVideo);
    ASSERT_FALSE(frames.empty());
    EXPECT_EQ(frames.back(), 4900) << "the newest is kept";
    EXPECT_EQ(queues.TakeDropped() + static_cast<std::int64_t>(frames.size()), 50);
    EXPECT_EQ(queues.TakeDropped(), 0);
    EXPECT_EQ(Rest(queues, kAudio).size(), 1000U);
}

TEST_F(Queues, ASourceLearnsThatItsStreamIsGone) {
    CaptureQueues queues(false, true);
    EXPECT_TRUE(Push(queues, kVideo, 0));
    queues.Cancel(kVideo);
    EXPECT_FALSE(Push(queues, kVideo, 100));
    FrameHandle frame;
    EXPECT_FALSE(queues.Pop(kVideo, frame));
}

class Writer : public testing::Test {
  protected:
    void Push(Interleaver& interleaver, MediaKind kind, std::int64_t ms) {
        CodedFrame frame;
        frame.dts = frame.pts = Ticks::FromMilliseconds(ms);
        interleaver.Push(kind, std::move(frame));
    }
    std::string Next(Interleaver& interleaver) {
        MediaKind kind = kAudio;
        CodedFrame frame;
        const Interleaver::Popped popped = interleaver.Pop(kind, frame);
        if (popped == Interleaver::Popped::End) return "end";
        if (popped == Interleaver::Popped::Nothing) return "nothing";
        if (popped == Interleaver::Popped::Quiet) return "quiet";
        return (kind == kAudio ? "a" : "v") + std::to_string(frame.dts.Milliseconds());
    }
};

// A sound server may take seconds to wake its device, or never do.
TEST_F(Writer, LetsNoFrameWaitForAudioThatDoesNotCome) {
    Interleaver interleaver(true, true, true, false, [] { return false; });
    Push(interleaver, kVideo, 0);
    EXPECT_EQ(Next(interleaver), "v0");
    EXPECT_EQ(Next(interleaver), "nothing");
    Push(interleaver, kAudio, 0);
    Push(interleaver, kVideo, 40);
    EXPECT_EQ(Next(interleaver), "a0");
}

TEST_F(Writer, IsToldOnceThatNothingComesWhereSomebodyWatches) {
    Interleaver interleaver(false, true, true, true, [] { return false; });
    for (int ms = 0; ms <= 40; ms += 40) {
        Push(interleaver, kVideo, ms);
        EXPECT_EQ(Next(interleaver), "v" + std::to_string(ms));
        EXPECT_EQ(Next(interleaver), "quiet");
    }
    EXPECT_EQ(Next(interleaver), "nothing");
}

TEST_F(Writer, WaitsForALiveStreamASecondAtMost) {
    Interleaver interleaver(true, true, true, false, [] { return false; });
    Push(interleaver, kVideo, 0);
    for (int ms = 0; ms <= 1500; ms += 100) Push(interleaver, kAudio, ms);
    std::string written;
    for (int i = 0; i < 7; ++i) written += Next(interleaver) + " ";
    EXPECT_EQ(written, "a0 v0 a100 a200 a300 a400 a500 ");
    // A frame of a time that has been passed takes its place behind.
    Push(interleaver, kVideo, 450);
    interleaver.Finish(kVideo);
    interleaver.Finish(kAudio);
    EXPECT_EQ(Next(interleaver), "v500");
    EXPECT_EQ(Next(interleaver), "a600");
}

}  // namespace
