#include "codecs/wma_voice/synthesis.h"

#include <algorithm>
#include <cstddef>

#include "codecs/common/index.h"
#include "codecs/wma_voice/vectors.h"

namespace codecs::wma_voice {
namespace {

constexpr float kGainWeights[kMostPulseGains] = {0.8169F, -0.06545F, 0.1726F,
                                                 0.0185F, -0.0359F,  0.0458F};
constexpr float kGainMean = -5.2409161640F;
constexpr float kLeastGainLog = -2.9957322736F;
constexpr float kMostGainLog = 1.6094379124F;

}  // namespace

void DecoderState::NextFrame() {
    std::copy(excitation.begin() + kFrameSamples, excitation.end(), excitation.begin());
}

void RepeatPitch(float* excitation, int samples, int quarters) {
    const int lag = quarters >> 2;
    const int phase = quarters & 3;
    if (phase == 0) {
        for (int n = 0; n < samples; ++n) excitation[n] = excitation[n - lag];
        return;
    }
    constexpr int kTaps = 8;
    std::array<float, std::size_t{2} * kTaps> filter;  // by place, the oldest first
    for (int i = 0; i < kTaps; ++i) {
        filter[Index(kTaps + i)] = kPitchInterpolation[Index(4 * i + phase)];
        filter[Index(kTaps - 1 - i)] = kPitchInterpolation[Index(4 * (i + 1) - phase)];
    }
    for (int n = 0; n < samples; ++n) {
        const float* const from = excitation + n - lag - kTaps;
        excitation[n] = Product(from, filter.data(), filter.size());
    }
}

float PredictedGainLog(const DecoderState& state) {
    float sum = kGainMean;
    for (std::size_t i = 0; i < state.pulse_gain_logs.size(); ++i)
        sum += state.pulse_gain_logs[i] * kGainWeights[i];
    return sum;
}

void NotePulseGain(DecoderState& state, int gain_index, int blocks) {
    auto& logs = state.pulse_gain_logs;
    const int places = std::min(8 / blocks, kMostPulseGains);
    std::copy_backward(logs.begin(), logs.end() - places, logs.end());
    std::fill_n(logs.begin(), places,
                std::clamp(kPulseGainLogs[Index(gain_index)], kLeastGainLog, kMostGainLog));
}

void ForgetPulseGains(DecoderState& state) { state.pulse_gain_logs = {}; }

int SilentNoisePlace(std::int64_t frame) {
    const std::int64_t x = frame % 0xFFFF;
    const std::int64_t y = x % 9 * 5 + 6;
    return static_cast<int>((49995 * x / y) % 0x10000 % (kNoiseLength - kFrameSamples));
}

Weights OldestFirst(const Prediction& prediction) {
    Weights weights;
    std::ranges::reverse_copy(prediction, weights.begin());
    return weights;
}

void Synthesise(const Weights& weights, std::span<float> values) {
    float* const now = values.data() + kMostOrder;
    for (std::size_t n = 0; n + kMostOrder < values.size(); ++n)
        now[n] -= Product(weights.data(), values.data() + n, kMostOrder);
}

Prediction BlockPrediction(const LineSpectrum& before, const LineSpectrum& spectrum, int order,
                           int block, int blocks) {
    LineSpectrum between{};
    const float part = (static_cast<float>(block) + 0.5F) / static_cast<float>(blocks);
    for (std::size_t i = 0; i < Index(order); ++i)
        between[i] = before[i] + part * (spectrum[i] - before[i]);
    return ToPrediction(std::span(between).first(Index(order)));
}

}  // namespace codecs::wma_voice
