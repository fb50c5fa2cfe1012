#include "conformance/wma/sounds.h"

#include <cmath>
#include <cstddef>
#include <numbers>
#include <random>
#include <utility>

namespace wma_conformance {
namespace {

// Calls `wave(channel, time in seconds)` for all samples.
template <typename Wave>
Sound Make(int sampling_rate, int channels, double seconds, const Wave& wave) {
    Sound sound(static_cast<std::size_t>(channels));
    const int count = static_cast<int>(seconds * sampling_rate);
    for (int n = 0; n < count; ++n)
        for (std::size_t c = 0; c < sound.size(); ++c)
            sound[c].push_back(
                static_cast<float>(wave(static_cast<int>(c), n / double(sampling_rate))));
    return sound;
}

class Noise {
  public:
    double operator()() { return static_cast<double>(random_()) / kHalf - 1; }

  private:
    static constexpr double kHalf = 2147483647.0 / 2;
    std::minstd_rand random_{11};
};

double Sine(double cycles) { return std::sin(2 * std::numbers::pi * cycles); }

}  // namespace

Sound Chords(int sampling_rate, int channels, double seconds) {
    constexpr double kBar = 0.7;
    constexpr double kNotes[] = {196, 261.6, 329.6, 220, 293.7, 440};
    Noise noise;
    return Make(sampling_rate, channels, seconds, [&](int channel, double time) {
        const double at = time + 0.2 * channel;
        const auto bar = static_cast<std::size_t>(at / kBar);
        const double fade = std::exp(-3 * (at - static_cast<double>(bar) * kBar));
        double sum = 0.002 * noise();
        for (int harmonic = 1; harmonic <= 4; ++harmonic) {
            const double hz = kNotes[bar % std::size(kNotes)] * harmonic;
            sum += 0.3 * fade / harmonic * Sine(hz * at);
            sum += 0.1 / harmonic *
                   Sine(0.75 * kNotes[static_cast<std::size_t>(channel) % std::size(kNotes)] *
                        harmonic * at);
        }
        return 0.8 * sum;
    });
}

Sound Bursts(int sampling_rate, int channels, double quiet, double seconds) {
    Noise noise;
    return Make(sampling_rate, channels, seconds, [&](int, double time) {
        if (time < quiet) return 0.0;
        const double since = std::fmod(time - quiet, 0.3);
        return 0.9 * noise() * std::exp(-30 * since);
    });
}

Sound WhiteNoise(int sampling_rate, int channels, double seconds) {
    Noise noise;
    return Make(sampling_rate, channels, seconds, [&](int, double) { return 0.9 * noise(); });
}

Sound LoudSine(int sampling_rate, int channels, double hz, double seconds) {
    return Make(sampling_rate, channels, seconds,
                [&](int, double time) { return 0.98 * Sine(hz * time); });
}

Sound Uneven(int sampling_rate, std::size_t from, std::size_t to) {
    const auto rate = static_cast<std::size_t>(sampling_rate);
    Sound sound = Chords(sampling_rate, 2, 24);
    const Sound noise = WhiteNoise(sampling_rate, 2, 24);
    for (std::size_t c = 0; c < sound.size(); ++c)
        for (std::size_t i = 0; i < sound[c].size(); ++i)
            if (i / rate >= from && i / rate < to) sound[c][i] = noise[c][i];
    return sound;
}

Sound Silence(int sampling_rate, int channels, double seconds) {
    return Make(sampling_rate, channels, seconds, [](int, double) { return 0; });
}

Sound WithSecond(Sound sound, float gain) {
    sound[1] = sound[0];
    for (float& sample : sound[1]) sample *= gain;
    return sound;
}

}  // namespace wma_conformance
