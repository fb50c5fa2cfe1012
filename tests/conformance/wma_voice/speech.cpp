#include "conformance/wma_voice/speech.h"

#include <cmath>
#include <cstddef>
#include <numbers>
#include <random>

namespace voice_conformance {
namespace {

using std::numbers::pi;

class Noise {
  public:
    double operator()() { return static_cast<double>(random_()) / kHalf - 1; }

  private:
    static constexpr double kHalf = 2147483647.0 / 2;
    std::minstd_rand random_{11};
};

// A formant: rings at a frequency.
class Resonator {
  public:
    double operator()(double in, double hz, double width_hz, int sampling_rate) {
        const double radius = std::exp(-pi * width_hz / sampling_rate);
        const double out = in + 2 * radius * std::cos(2 * pi * hz / sampling_rate) * last_ -
                           radius * radius * older_;
        older_ = last_;
        return last_ = out;
    }

  private:
    double last_ = 0, older_ = 0;
};

// Calls `wave(time in seconds)` for all samples.
template <typename Wave>
Sound Make(int sampling_rate, double seconds, const Wave& wave) {
    Sound sound;
    const int count = static_cast<int>(seconds * sampling_rate);
    for (int n = 0; n < count; ++n)
        sound.push_back(static_cast<float>(wave(n / static_cast<double>(sampling_rate))));
    return sound;
}

}  // namespace

Sound Speech(int sampling_rate, double seconds) {
    constexpr double kVowels[][3] = {
        {700, 1200, 2600}, {300, 2200, 2900}, {350, 800, 2400}, {500, 1800, 2500}};
    constexpr double kSyllable = 0.3;
    Noise noise;
    Resonator formants[3];
    double cycles = 0;
    return Make(sampling_rate, seconds, [&](double time) {
        const auto syllable = static_cast<std::size_t>(time / kSyllable);
        const double part = time / kSyllable - static_cast<double>(syllable);
        const double* const vowel = kVowels[syllable % std::size(kVowels)];
        double source = 0.001 * noise();
        if (syllable % 5 != 4) {
            const double swell = std::sin(pi * part);
            const double before = cycles;
            cycles += (110 + 40 * std::sin(time) + 20 * part) / sampling_rate;
            if (part > 0.25 && std::floor(cycles) > std::floor(before)) source += 0.6 * swell;
            if (part < 0.25) source += 0.02 * noise();
        }
        double out = source;
        for (std::size_t k = 0; k < 3; ++k)
            out = formants[k](out, vowel[k], 60.0 + 40.0 * static_cast<double>(k), sampling_rate);
        return 0.012 * out * 8000 / sampling_rate;
    });
}

Sound WhiteNoise(int sampling_rate, double seconds) {
    Noise noise;
    return Make(sampling_rate, seconds, [&](double /*time*/) { return 0.9 * noise(); });
}

Sound Sine(int sampling_rate, double hz, double seconds) {
    return Make(sampling_rate, seconds,
                [&](double time) { return 0.98 * std::sin(2 * pi * hz * time); });
}

Sound Chords(int sampling_rate, double seconds) {
    constexpr double kNotes[][3] = {{196, 246.9, 293.7}, {220, 261.6, 329.6}, {174.6, 220, 261.6}};
    return Make(sampling_rate, seconds, [&](double time) {
        const double* const notes = kNotes[static_cast<std::size_t>(time) % std::size(kNotes)];
        double sum = 0;
        for (int note = 0; note < 3; ++note)
            for (int harmonic = 1; harmonic <= 6; ++harmonic)
                sum += std::sin(2 * pi * notes[note] * harmonic * time) / harmonic;
        return 0.12 * sum;
    });
}

Sound Silence(int sampling_rate, double seconds) {
    return Make(sampling_rate, seconds, [](double /*time*/) { return 0; });
}

Sound Louder(Sound sound, float gain) {
    for (float& sample : sound) sample *= gain;
    return sound;
}

Sound Joined(Sound first, const Sound& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

}  // namespace voice_conformance
