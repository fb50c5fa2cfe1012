#include "codecs/wma_voice/block_filter.h"

#include <algorithm>
#include <cstddef>

#include "codecs/wma_voice/vectors.h"

namespace codecs::wma_voice {
namespace {

constexpr float kNumeratorWidth = 0.94F;
constexpr float kDenominatorWidth = 0.6F;

Prediction Widened(const Prediction& prediction, float width) {
    Prediction widened = prediction;
    float factor = 1;
    for (float& value : widened) value *= factor *= width;
    return widened;
}

}  // namespace

BlockFilter::BlockFilter(const Prediction& prediction, std::span<const float> samples)
    : prediction_(OldestFirst(prediction)),
      numerator_(OldestFirst(Widened(prediction, kNumeratorWidth))),
      denominator_(OldestFirst(Widened(prediction, kDenominatorWidth))),
      samples_(samples) {
    Signal pulse{};
    pulse[kMostOrder] = 1;
    Signal heard{};
    Synthesise(prediction_, Whole(pulse));
    Hear(pulse, heard);
    std::copy_n(heard.begin() + kMostOrder, samples_.size(), response_.begin());
    std::reverse_copy(response_.begin(), response_.begin() + Samples(), reversed_.begin());
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
    for (std::size_t k = 0; k < count; ++k) {
        const float value = excitation[k];
        if (value == 0) continue;
        for (std::size_t n = k; n < count; ++n) to[n] += value * response_[n - k];
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
