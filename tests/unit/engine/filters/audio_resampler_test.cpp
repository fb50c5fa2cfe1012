// Sound that follows a clock which its device does not have.
#include "engine/filters/audio_resampler.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <vector>

#include "unit/engine/filters/audio_frames.h"

namespace {

const std::atomic<bool> kNoStop{false};

using namespace engine;

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
TEST(Drift, AudioKeepsUpWithTheClockForAnHour) {
    constexpr int kRate = 8000;
    constexpr int kChunk = kRate / 50;
    constexpr double kHour = 3600;
    constexpr int kPeriod = 40;
    constexpr int kAmplitude = 8000;
    for (const DriftCase& row : kDriftCases) {
        SCOPED_TRACE(row.why);
        FramePool frames;
        AudioResampler resampler({AV_SAMPLE_FMT_S16, kRate, 1, kRate / 10}, {}, AudioClock::Capture,
                                 {}, kNoStop, frames);
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
            audio_frames::FillAudio(
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
        constexpr int kRate = audio_frames::kRate;
        FramePool frames;
        AudioResampler resampler({AV_SAMPLE_FMT_S16, kRate, 1, 1024}, {}, AudioClock::Capture, {},
                                 kNoStop, frames);
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
            audio_frames::FillAudio(*frame, Ticks::FromMilliseconds(ms), kRate / 2,
                                    [](int) { return std::int16_t{1000}; });
            ASSERT_TRUE(resampler.Push(std::move(frame), sink));
        }
        ASSERT_TRUE(resampler.Finish(sink));
        EXPECT_NEAR(static_cast<double>(written) / kRate, row.length_s, 0.004);
        EXPECT_NEAR(static_cast<double>(silent) / kRate, std::max(0.0, row.length_s - 1), 0.002);
    }
}

/// What comes out in whole numbers at half the rate, of a quiet sound with `value` in its middle.
template <typename Value>
std::vector<std::int16_t> Resampled(AVSampleFormat format, Value value) {
    constexpr int kRate = audio_frames::kRate;
    FramePool frames;
    AudioResampler resampler({AV_SAMPLE_FMT_S16, kRate / 2, 2, 1024}, {}, AudioClock::Media, {},
                             kNoStop, frames);
    std::vector<std::int16_t> out;
    const FrameSink sink = [&](FrameHandle frame) {
        const auto* samples = reinterpret_cast<const std::int16_t*>(frame->data[0]);
        out.insert(out.end(), samples, samples + 2 * frame->nb_samples);
        return true;
    };
    std::vector<Value> samples(kRate, Value{0.25});
    samples[kRate / 2] = value;
    FrameHandle frame = frames.Get();
    audio_frames::FillStereo(*frame, format, samples);
    const FrameHandle kept = frames.Get();
    EXPECT_EQ(av_frame_ref(kept.get(), frame.get()), 0);
    EXPECT_TRUE(resampler.Push(std::move(frame), sink));
    EXPECT_TRUE(resampler.Finish(sink));
    const auto* own = reinterpret_cast<const Value*>(kept->data[0]);
    const int step = av_sample_fmt_is_planar(format) != 0 ? 1 : 2;
    EXPECT_EQ(std::isnan(own[step * kRate / 2]), std::isnan(value)) << "what others hold is theirs";
    return out;
}

template <typename Value>
void ExpectRangeFor(AVSampleFormat format) {
    using Limits = std::numeric_limits<Value>;
    const std::vector<std::int16_t> silent = Resampled(format, Value{0});
    const std::vector<std::int16_t> loud = Resampled(format, Value{16});
    ASSERT_GT(silent.size(), 44000U);
    EXPECT_NE(silent, loud);
    EXPECT_EQ(Resampled(format, Limits::quiet_NaN()), silent);
    EXPECT_EQ(Resampled(format, Limits::infinity()), silent);
    EXPECT_EQ(Resampled(format, -Limits::infinity()), silent);
    EXPECT_EQ(Resampled(format, Value{1e20F}), loud);
    EXPECT_EQ(Resampled(format, Limits::max()), loud);
    EXPECT_EQ(Resampled(format, Limits::lowest()), Resampled(format, Value{-16}));
}

TEST(AudioResampler, WhatIsNoSoundIsSilenceAndWhatIsTooLoudIsHeld) {
    ExpectRangeFor<float>(AV_SAMPLE_FMT_FLT);
    ExpectRangeFor<float>(AV_SAMPLE_FMT_FLTP);
    ExpectRangeFor<double>(AV_SAMPLE_FMT_DBL);
}

}  // namespace
