// What lies between a live source and its stream: queues that never make a source wait, a writer
// that waits for nobody long, and sound that follows a clock which its device does not have.
#include <gtest/gtest.h>

#include <cmath>
#include <thread>

#include "engine/filters/audio_resampler.h"
#include "engine/pipeline/capture_queues.h"
#include "engine/pipeline/interleaver.h"
#include "unit/engine/pipeline/fake_devices.h"

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

TEST_F(Queues, CountFromTheFirstSoundWhereNoFrameComes) {
    CaptureQueues ended(true, true);
    Push(ended, kAudio, 1000);
    ended.Finish(kVideo);
    ASSERT_TRUE(ended.Start()) << "the picture has ended before it began";
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
    const Times pictures = Rest(queues, kVideo);
    ASSERT_FALSE(pictures.empty());
    EXPECT_EQ(pictures.back(), 4900) << "the newest is kept";
    EXPECT_EQ(queues.TakeDropped() + static_cast<std::int64_t>(pictures.size()), 50);
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
        CodedPacket packet;
        packet.data = packets_.Get();
        packet.dts = packet.pts = Ticks::FromMilliseconds(ms);
        interleaver.Push(kind, std::move(packet));
    }
    std::string Next(Interleaver& interleaver) {
        MediaKind kind = kAudio;
        CodedPacket packet;
        if (!interleaver.Pop(kind, packet)) return "end";
        return (kind == kAudio ? "a" : "v") + std::to_string(packet.dts.Milliseconds());
    }
    PacketPool packets_;
};

TEST_F(Writer, WaitsForTheFirstSound) {
    Interleaver interleaver(true, true, true, [] { return false; });
    for (int ms = 0; ms <= 3000; ms += 1000) Push(interleaver, kVideo, ms);
    std::thread late([&] {
        Push(interleaver, kAudio, 0);
        interleaver.Finish(kAudio);
        interleaver.Finish(kVideo);
    });
    std::string written;
    for (int i = 0; i < 5; ++i) written += Next(interleaver) + " ";
    late.join();
    EXPECT_EQ(written, "a0 v0 v1000 v2000 v3000 ");
}

TEST_F(Writer, WaitsForALiveStreamASecondAtMost) {
    Interleaver interleaver(true, true, true, [] { return false; });
    Push(interleaver, kVideo, 0);
    for (int ms = 0; ms <= 1500; ms += 100) Push(interleaver, kAudio, ms);
    std::string written;
    for (int i = 0; i < 7; ++i) written += Next(interleaver) + " ";
    EXPECT_EQ(written, "a0 v0 a100 a200 a300 a400 a500 ");
    // A picture of a time that has been passed takes its place behind.
    Push(interleaver, kVideo, 450);
    interleaver.Finish(kVideo);
    interleaver.Finish(kAudio);
    EXPECT_EQ(Next(interleaver), "v500");
    EXPECT_EQ(Next(interleaver), "a600");
}

// A device whose clock runs wrong by `ppm`, and whose timestamps jitter.
struct DriftCase {
    const char* why;
    double ppm;
    double jitter_ms;
    double most_off_ms;  // once a minute has passed
};

const DriftCase kDriftCases[] = {
    // why                                  ppm   jitter  off
    {"a good device, fast", 50, 0, 0.2},  {"a good device, slow", -50, 0, 0.2},
    {"a bad one, fast", 2000, 0, 0.5},    {"a bad one, slow", -2000, 0, 0.5},
    {"timestamps that jitter", 50, 5, 3},
};

// At a low rate, so that the hour is over in a second.
TEST(Drift, SoundKeepsUpWithTheClockForAnHour) {
    constexpr int kRate = 8000;
    constexpr int kChunk = kRate / 50;
    constexpr double kHour = 3600;
    constexpr int kPeriod = 40;
    constexpr int kAmplitude = 8000;
    for (const DriftCase& row : kDriftCases) {
        SCOPED_TRACE(row.why);
        FramePool frames;
        AudioResampler resampler({AV_SAMPLE_FMT_S16, kRate, 1, kRate / 10}, {}, AudioClock::Capture,
                                 {}, frames);
        std::int64_t written = 0;
        int steepest = 0;
        int last = 0;
        const FrameSink sink = [&](FrameHandle frame) {
            const auto* samples = reinterpret_cast<const std::int16_t*>(frame->data[0]);
            for (int i = 0; i < frame->nb_samples; ++i) {
                steepest = std::max(steepest, std::abs(samples[i] - last));
                last = samples[i];
            }
            written += frame->nb_samples;
            return true;
        };
        const double device_rate = kRate * (1 + row.ppm * 1e-6);
        double most_off_s = 0;
        std::uint32_t random = 1;
        std::int64_t sent = 0;
        double now_s = 0;
        while (now_s < kHour) {
            random = random * 1664525U + 1013904223U;
            const double jitter_s = row.jitter_ms / 1000 * (random / 2147483648.0 - 1);
            const double stamp_s = sent == 0 ? 0 : std::max(0.0, now_s + jitter_s);
            FrameHandle frame = frames.Get();
            fake_devices::FillAudio(
                *frame, {std::llround(stamp_s * Ticks::kPerSecond)}, kChunk, [&](int i) {
                    const double phase = static_cast<double>((sent + i) % kPeriod) / kPeriod;
                    return static_cast<std::int16_t>(kAmplitude * std::sin(2 * M_PI * phase));
                });
            frame->sample_rate = kRate;
            sent += kChunk;
            now_s = static_cast<double>(sent) / device_rate;
            ASSERT_TRUE(resampler.Push(std::move(frame), sink));
            if (now_s > 60)
                most_off_s = std::max(most_off_s, static_cast<double>(written) / kRate - now_s);
        }
        ASSERT_TRUE(resampler.Finish(sink));
        EXPECT_NEAR(static_cast<double>(written) / kRate, now_s, row.most_off_ms / 1000);
        EXPECT_LT(most_off_s, row.most_off_ms / 1000) << "ahead of the clock";
        // Steeper than the wave itself: a sample was left out or put in.
        EXPECT_LT(steepest, kAmplitude * 2 * M_PI / kPeriod * 1.02);
    }
}

struct BreakCase {
    const char* why;
    int second_ms;  // when the second half second begins; 500 = on time
    double length_s;
};

TEST(Drift, GapsAreFilledAndOverlapsCut) {
    const BreakCase rows[] = {
        {"on time", 500, 1.0},
        {"a gap", 900, 1.4},
        {"an overlap", 300, 0.8},
        {"jitter", 520, 1.0},
    };
    for (const BreakCase& row : rows) {
        SCOPED_TRACE(row.why);
        constexpr int kRate = fake_devices::kRate;
        FramePool frames;
        AudioResampler resampler({AV_SAMPLE_FMT_S16, kRate, 1, 1024}, {}, AudioClock::Capture, {},
                                 frames);
        std::int64_t written = 0;
        std::int64_t silent = 0;
        const FrameSink sink = [&](FrameHandle frame) {
            const auto* samples = reinterpret_cast<const std::int16_t*>(frame->data[0]);
            silent += std::count(samples, samples + frame->nb_samples, 0);
            written += frame->nb_samples;
            return true;
        };
        for (const int ms : {0, row.second_ms}) {
            FrameHandle frame = frames.Get();
            fake_devices::FillAudio(*frame, Ticks::FromMilliseconds(ms), kRate / 2,
                                    [](int) { return std::int16_t{1000}; });
            ASSERT_TRUE(resampler.Push(std::move(frame), sink));
        }
        ASSERT_TRUE(resampler.Finish(sink));
        EXPECT_NEAR(static_cast<double>(written) / kRate, row.length_s, 0.004);
        EXPECT_NEAR(static_cast<double>(silent) / kRate, std::max(0.0, row.length_s - 1), 0.002);
    }
}

}  // namespace
