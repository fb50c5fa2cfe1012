// What the recording of a screen keeps to: the receiver's buffer, the distance of key frames.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "engine/base/av/av_error.h"
#include "engine/encoders/make_encoder.h"
#include "platform/codec_table.h"

namespace engine {
namespace {

using platform::VbrMode;

constexpr int kWidth = 160;
constexpr int kHeight = 96;
constexpr int kRate = 10;  // frames a second

VideoPlan ScreenPlan() {
    VideoPlan plan;
    plan.codec = platform::FindVideoCodec("WMS9");
    plan.width = kWidth;
    plan.height = kHeight;
    plan.expected_rate = 1000 * kRate;
    plan.bit_rate_bps = 200'000;
    plan.buffer_ms = 2000;
    plan.key_frame_distance_ms = 4000;
    plan.encoder_threads = 1;
    return plan;
}

struct Coded {
    double seconds;
    double length;
    double bits;
    bool key;
};

/// Frames of which `moving` a second have other noise than the one before, in what part of the
/// screen `noise` says; the rest of it is flat.
struct Source {
    int frames = 0;
    int moving = 0;
    double noise = 1;
};

struct Outcome {
    std::vector<Coded> coded;
    std::int64_t dropped = 0;
};

Outcome Encode(const VideoPlan& plan, const Source& source) {
    CodedFramePool packets;
    FramePool frames;
    Outcome outcome;
    const std::unique_ptr<VideoEncoder> encoder = MakeVideoEncoder(plan, {}, packets);
    const CodedFrameSink sink = [&](CodedFrame frame) {
        constexpr double kSecond = Ticks::kPerSecond;
        outcome.coded.push_back({static_cast<double>(frame.pts.count) / kSecond,
                                 static_cast<double>(frame.duration.count) / kSecond,
                                 8.0 * static_cast<double>(frame.bytes.size()), frame.key});
        return true;
    };
    const auto noisy_rows = static_cast<int>(kHeight * source.noise);
    for (int i = 0; i < source.frames; ++i) {
        FrameHandle frame = frames.Get();
        frame->format = encoder->Format().pixels;
        frame->width = kWidth;
        frame->height = kHeight;
        CheckAv(av_frame_get_buffer(frame.get(), 0), "no frame");
        std::mt19937 random(static_cast<unsigned>(i * source.moving / kRate));
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < 4 * kWidth; ++x)
                frame->data[0][y * frame->linesize[0] + x] =
                    static_cast<std::uint8_t>(y < noisy_rows ? random() : 0xC0);
        frame->pts = i * Ticks::kPerSecond / kRate;
        frame->pkt_duration = Ticks::kPerSecond / kRate;
        EXPECT_TRUE(encoder->Encode(*frame, sink));
    }
    EXPECT_TRUE(encoder->Finish(sink));
    outcome.dropped = encoder->TakeDroppedFrames().frames;
    return outcome;
}

struct Row {
    const char* why;
    VbrMode mode;
    std::int32_t rate_bps;
    bool drops;
};
// clang-format off
constexpr Row kRows[] = {
    // why                             mode               rate     drops
    {"coarser rectangles are enough",  VbrMode::Constant, 200'000, false},
    {"frames have to be dropped",      VbrMode::Constant,  40'000, true},
    {"the same at a peak rate",        VbrMode::Peak,      40'000, true},
};
// clang-format on

TEST(ScreenVideoEncoder, NeverOverrunsTheReceiversBuffer) {
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.why);
        VideoPlan plan = ScreenPlan();
        plan.mode = row.mode;
        plan.bit_rate_bps = row.rate_bps;
        plan.peak_rate_bps = row.rate_bps * 3 / 2;
        plan.peak_buffer_ms = 1500;
        const bool peak = row.mode == VbrMode::Peak;
        const double rate = peak ? plan.peak_rate_bps : plan.bit_rate_bps;
        const double size = rate * (peak ? plan.peak_buffer_ms : plan.buffer_ms) / 1000;
        const Outcome outcome = Encode(plan, {.frames = 200, .moving = kRate});
        double level = 0;
        double last = 0;
        for (const Coded& coded : outcome.coded) {
            level = std::max(0.0, level - rate * (coded.seconds - last)) + coded.bits;
            last = coded.seconds;
            EXPECT_LE(level, size) << "at " << coded.seconds;
        }
        EXPECT_EQ(outcome.coded.size() + static_cast<std::size_t>(outcome.dropped), 200U);
        EXPECT_EQ(outcome.dropped > 0, row.drops) << outcome.dropped;
        // A frame stays for those that were dropped after it.
        const Coded& end = outcome.coded.back();
        EXPECT_NEAR(end.seconds + end.length, 200.0 / kRate, 1e-6);
    }
}

// Where something changes, key frames keep their distance; a still screen does without.
TEST(ScreenVideoEncoder, SendsKeyFramesForWhatChanges) {
    const auto keys = [](const Outcome& outcome) {
        return std::ranges::count(outcome.coded, true, &Coded::key);
    };
    VideoPlan plan = ScreenPlan();
    plan.bit_rate_bps = 4'000'000;
    EXPECT_EQ(keys(Encode(plan, {.frames = 200, .moving = 2, .noise = 0.1})), 5);
    const Outcome still = Encode(plan, {.frames = 200});
    EXPECT_EQ(keys(still), 1);
    double bits = 0;
    for (const Coded& coded : still.coded) bits += coded.seconds > 2 ? coded.bits : 0;
    EXPECT_LE(bits, 180 * 24);
}

TEST(ScreenVideoEncoder, CodesPhotosAsFinelyAsTheQualitySays) {
    std::size_t last = 0;
    for (const int quality : {10, 60, 100}) {
        VideoPlan plan = ScreenPlan();
        plan.mode = VbrMode::Quality;
        plan.quality = quality;
        double bits = 0;
        for (const Coded& coded : Encode(plan, {.frames = 8, .moving = kRate}).coded)
            bits += coded.bits;
        EXPECT_GT(static_cast<std::size_t>(bits), last) << quality;
        last = static_cast<std::size_t>(bits);
    }
}

}  // namespace
}  // namespace engine
