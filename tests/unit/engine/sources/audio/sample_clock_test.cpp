// Times of samples out of observations that jitter: simulated, without a clock.
#include "engine/sources/audio/sample_clock.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace engine {
namespace {

constexpr int kSamplingRate = 48000;
constexpr double kStart = 4321;  // seconds; clocks do not start at 0

struct Device {
    const char* why;
    double drift;        // of the device's rate, as a part of it
    double jitter;       // seconds, either way
    double interval;     // seconds between observations
    double worst_early;  // seconds by which times may be off after the first second
    double worst_late;   // after the twentieth
};

// Jitter of 10 ms either way that is spread evenly cannot be averaged below a millisecond in the
// first second by a hundred observations each time, so the table holds the mean to that, and the
// worst only later.
const Device kDevices[] = {
    // why                                   drift    jitter  each   early    late
    {"a machine that is busy", 0, 10e-3, 0.01, 2.5e-3, 1e-3},
    {"a device that runs fast", -300e-6, 10e-3, 0.01, 2.5e-3, 1e-3},
    {"a device that runs slow", 300e-6, 10e-3, 0.01, 2.5e-3, 1e-3},
    {"a server's own times, asked seldom", 100e-6, 1e-3, 0.05, 0.5e-3, 0.2e-3},
    {"one that never jitters", 300e-6, 0, 0.05, 1e-3, 0.5e-3},
};

std::int64_t PositionAt(double seconds) { return std::llround(seconds * kSamplingRate); }

Ticks TicksOf(double seconds) { return {std::llround(seconds * Ticks::kPerSecond)}; }

TEST(SampleClock, AveragesJitterAndFollowsDrift) {
    for (const Device& device : kDevices) {
        SCOPED_TRACE(device.why);
        std::mt19937 random(20);
        std::uniform_real_distribution<double> jitter(-device.jitter, device.jitter);
        SampleClock clock(kSamplingRate);
        double early = 0;
        double late = 0;
        double squares = 0;
        int count = 0;
        for (double nominal = 0; nominal < 120; nominal += device.interval) {
            const double heard = kStart + nominal * (1 + device.drift);
            clock.Observe(PositionAt(nominal), TicksOf(heard + jitter(random)));
            const double error = std::abs(clock.TimeOf(PositionAt(nominal)).Seconds() - heard);
            if (nominal < 1) continue;
            double& worst = nominal < 20 ? early : late;
            worst = std::max(worst, error);
            squares += error * error;
            ++count;
        }
        EXPECT_LT(early, device.worst_early);
        EXPECT_LT(late, device.worst_late);
        EXPECT_LT(std::sqrt(squares / count), device.worst_late / 1.5);
    }
}

TEST(SampleClock, TimesAdvanceByTheSamplesLength) {
    std::mt19937 random(20);
    std::uniform_real_distribution<double> jitter(-5e-3, 5e-3);
    SampleClock clock(kSamplingRate);
    constexpr double kStep = 0.02;
    for (int i = 0; i < 1000; ++i) {
        const std::int64_t position = PositionAt(i * kStep);
        const Ticks before = clock.IsSet() ? clock.TimeOf(position) : Ticks{};
        clock.Observe(position, TicksOf(kStart + i * kStep + jitter(random)));
        if (i < 50) continue;
        EXPECT_LT(std::abs((clock.TimeOf(position) - before).Seconds()), 0.3e-3);
    }
}

TEST(SampleClock, JumpsWhenTheTimeReallyDoes) {
    constexpr double kLater = 0.35;
    SampleClock clock(kSamplingRate);
    const auto observe = [&](double nominal, double more) {
        clock.Observe(PositionAt(nominal), TicksOf(kStart + nominal + more));
        return clock.TimeOf(PositionAt(nominal)).Seconds() - kStart - nominal;
    };
    for (int i = 0; i < 100; ++i) observe(i * 0.01, 0);
    EXPECT_NEAR(observe(1, kLater), 0, 1e-6) << "a single one is a fault";
    EXPECT_NEAR(observe(1.01, 0), 0, 1e-6);
    observe(1.02, kLater);
    EXPECT_NEAR(observe(1.03, kLater), kLater, 1e-6) << "two in a row are the truth";
    EXPECT_NEAR(observe(1.04, kLater), kLater, 1e-6);

    clock.Restart();
    EXPECT_FALSE(clock.IsSet());
    EXPECT_NEAR(observe(1.05, 0), 0, 1e-6) << "a jump that is known of needs no second";
}

}  // namespace
}  // namespace engine
