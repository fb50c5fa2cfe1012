#include "codecs/wma_voice/block_filter.h"

#include <algorithm>
#include <cstddef>

#include "codecs/wma_voice/vectors.h"

namespace codecs::wma_voice {
namespace {

// For STOI of the speech of bench/voice, and for PEAQ on asterisk-moh-opsound.
constexpr float kSpeechNumeratorWidth = 0.97F;
constexpr float kMixedNumeratorWidth = 0.94F;
constexpr float kDenominatorWidth = 0.6F;

Prediction Widened(const Prediction& prediction, float width) {
    Prediction widened = prediction;
    float factor = 1;
    for (float& value : widened) value *= factor *= width;
    return widened;
}

}  // namespace

BlockFilter::BlockFilter(const Prediction& prediction, std::span<const float> samples, bool mixed)
    : prediction_(OldestFirst(prediction)),
      numerator_(
          OldestFirst(Widened(prediction, mixed ? kMixedNumeratorWidth : kSpeechNumeratorWidth))),
      denominator_(OldestFirst(Widened(prediction, kDenominatorWidth))),
      samples_(samples) {
    Signal pulse{};
    pulse[kMostOrder] = 1;
    Signal heard{};
    Synthesise(prediction_, Whole(pulse));
    Hear(pulse, heard);
    std::copy_n(heard.begin() + kMostOrder, samples_.size(), response_.begin() + kLanes - 1);
    std::ranges::reverse_copy(Response(), reversed_.begin());
    if (samples_.size() <= kMostBlock) correlations_.Compute(Response());
}

std::span<float> BlockFilter::Whole(Signal& signal) const {
    return std::span(signal).first(kMostOrder + samples_.size());
}

void BlockFilter::Hear(const Signal& errors, Signal& heard) const {
    for (std::size_t n = 0; n < samples_.size(); ++n)
        heard[kMostOrder + n] =
            errors[kMostOrder + n] + Product(numerator_.data(), errors.data() + n, kMostOrder);
    Synthesise(denominator_, Whole(heard));
}

void BlockFilter::Target(const CoderState& state, std::span<float> target) const {
    Signal left{};
    std::ranges::copy(state.decoder.output, left.begin());
    Synthesise(prediction_, Whole(left));
    Signal errors;
    std::ranges::copy(state.errors, errors.begin());
    for (std::size_t n = 0; n < samples_.size(); ++n)
        errors[kMostOrder + n] = samples_[n] - left[kMostOrder + n];
    Signal heard;
    std::ranges::copy(state.heard_errors, heard.begin());
    Hear(errors, heard);
    std::copy_n(heard.begin() + kMostOrder, samples_.size(), target.begin());
}

void BlockFilter::Filter(std::span<const float> excitation, std::span<float> to) const {
    const std::size_t count = samples_.size();
    std::fill_n(to.begin(), count, 0.0F);
    for (std::size_t k = 0; k < count; k += kLanes) {
        std::array<float, kLanes> values;
        std::copy_n(excitation.begin() + static_cast<std::ptrdiff_t>(k), kLanes, values.begin());
        if (values == std::array<float, kLanes>{}) continue;
        const float* const response = response_.data();
        float* const from = to.data() + k;
        for (std::size_t n = 0; n < count - k; ++n)
            from[n] += (values[0] * response[n + 3] + values[1] * response[n + 2]) +
                       (values[2] * response[n + 1] + values[3] * response[n]);
    }
}

void BlockFilter::Correlate(std::span<const float> heard, std::span<float> to) const {
    const std::size_t count = samples_.size();
    std::fill_n(to.begin(), count, 0.0F);
    for (std::size_t n = 0; n < count; ++n) {
        const float value = heard[n];
        const float* const response = reversed_.data() + count - 1 - n;
        for (std::size_t k = 0; k <= n; ++k) to[k] += value * response[k];
    }
}

void BlockFilter::Advance(CoderState& state, int at, std::span<float> decoded) const {
    const std::size_t count = samples_.size();
    Signal sound;
    std::ranges::copy(state.decoder.output, sound.begin());
    std::copy_n(state.decoder.Frame() + at, count, sound.begin() + kMostOrder);
    Synthesise(prediction_, Whole(sound));
    std::copy_n(sound.begin() + kMostOrder, count, decoded.begin());
    Signal errors;
    std::ranges::copy(state.errors, errors.begin());
    for (std::size_t n = 0; n < count; ++n) errors[kMostOrder + n] = samples_[n] - decoded[n];
    Signal heard;
    std::ranges::copy(state.heard_errors, heard.begin());
    Hear(errors, heard);
    const auto keep = [&](const Signal& from, std::array<float, kMostOrder>& to) {
        std::copy_n(from.begin() + Samples(), kMostOrder, to.begin());
    };
    keep(sound, state.decoder.output);
    keep(errors, state.errors);
    keep(heard, state.heard_errors);
}

}  // namespace codecs::wma_voice
