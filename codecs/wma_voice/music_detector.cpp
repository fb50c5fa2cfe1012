#include "codecs/wma_voice/music_detector.h"

#include <algorithm>
#include <numeric>

namespace codecs::wma_voice {
namespace {

constexpr int kStretchesPerSecond = 50;
constexpr std::size_t kStretches = std::size_t{3} * kStretchesPerSecond;
// A gap is this far below the mean. Of prompts of asterisk-core-sounds-en 31 to 47 of 100 stretches
// are gaps, of the pieces of asterisk-moh-opsound none to 23.
constexpr float kGap = 0.1F;
constexpr double kFewGaps = 0.15;
constexpr double kManyGaps = 0.25;
constexpr float kSilence = 1e-6F;  // mean square

}  // namespace

MusicDetector::MusicDetector(int sampling_rate)
    : stretch_samples_(sampling_rate / kStretchesPerSecond), energies_(kStretches) {}

void MusicDetector::Add(std::span<const float> samples) {
    for (const float sample : samples) {
        energy_ += sample * sample;
        if (++filled_ < stretch_samples_) continue;
        energies_[next_] = energy_;
        next_ = (next_ + 1) % kStretches;
        known_ = std::min(known_ + 1, kStretches);
        filled_ = 0;
        energy_ = 0;
        Judge();
    }
}

void MusicDetector::Judge() {
    if (known_ < kStretchesPerSecond) return;
    const std::span<const float> known = std::span(energies_).first(known_);
    const float mean =
        std::accumulate(known.begin(), known.end(), 0.0F) / static_cast<float>(known_);
    const auto gaps = std::ranges::count_if(known, [&](float e) { return e < kGap * mean; });
    const double part = static_cast<double>(gaps) / static_cast<double>(known_);
    const bool is_silent = mean < kSilence * static_cast<float>(stretch_samples_);
    is_music_ = !is_silent && part < (is_music_ ? kManyGaps : kFewGaps);
}

}  // namespace codecs::wma_voice
