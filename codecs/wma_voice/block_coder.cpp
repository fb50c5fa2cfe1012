#include "codecs/wma_voice/block_coder.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>
#include <utility>

#include "codecs/common/index.h"
#include "codecs/wma_voice/vectors.h"

namespace codecs::wma_voice {
namespace {

constexpr std::size_t kFilteredLags = 4;  // whole lags that are tried through the filter
constexpr int kNearQuarters = 4;          // around a lag, for its fractions
constexpr std::size_t kFilteredNoises = 6;
// Noise has about its block's power, so that it is heard, and a little less, since it is noise.
constexpr float kNoisePart = 0.8F;

using Block = std::array<float, kMostBlock>;

// What a vector takes off a target's power when its gain is the best one, which shall be above 0.
float Worth(float correlation, float power) {
    return correlation > 0 && power > 0 ? correlation * correlation / power : 0;
}

double Square(float value) { return static_cast<double>(value) * static_cast<double>(value); }

// Of kNoise from a place on.
float NoisePower(int place, std::size_t samples) {
    static const auto sums = [] {  // of squares before a place
        std::array<double, kNoiseLength + 1> before{};
        for (std::size_t n = 0; n < kNoise.size(); ++n)
            before[n + 1] = before[n] + Square(kNoise[n]);
        return before;
    }();
    return static_cast<float>(sums[Index(place) + samples] - sums[Index(place)]);
}

}  // namespace

BlockCoder::BlockCoder(const StreamFormat& format) : format_(format), pulse_gains_(kPulseGainLogs) {
    for (float& gain : pulse_gains_) gain = std::exp(gain);
}

std::vector<int> BlockCoder::LikelyLags(const BlockFilter& filter, const float* now,
                                        PitchSpan pitches,
                                        std::span<const float> correlation) const {
    const int samples = filter.Samples();
    const int shortest = (format_.Quarters(pitches.first) + 3) / 4;
    const int longest = format_.Quarters(pitches.end - 1) / 4;
    std::vector<float> worths;  // without the filter on the power
    Block repeated;
    double power = -1;  // of the last lag's vector, where nothing is repeated
    for (int lag = shortest; lag <= longest; ++lag) {
        const float* from = now - lag;
        if (lag < samples) {
            for (int n = 0; n < samples; ++n)
                repeated[Index(n)] = n < lag ? from[n] : repeated[Index(n - lag)];
            from = repeated.data();
        }
        const std::span vector(from, Index(samples));
        if (lag <= samples || power < 0)
            power = static_cast<double>(Power(vector));
        else
            power = std::max(power + Square(from[0]) - Square(from[samples]), 0.0);
        worths.push_back(Worth(Product(correlation, vector), static_cast<float>(power)));
    }
    std::vector<std::pair<float, int>> peaks;
    for (std::size_t k = 0; k < worths.size(); ++k) {
        const bool peak = (k == 0 || worths[k] >= worths[k - 1]) &&
                          (k + 1 == worths.size() || worths[k] >= worths[k + 1]);
        if (peak) peaks.emplace_back(worths[k], shortest + static_cast<int>(k));
    }
    const std::size_t kept = std::min(peaks.size(), kFilteredLags);
    std::ranges::partial_sort(peaks, peaks.begin() + static_cast<std::ptrdiff_t>(kept),
                              std::greater<>());
    std::vector<int> lags;
    for (std::size_t k = 0; k < kept; ++k) lags.push_back(peaks[k].second);
    return lags;
}

int BlockCoder::ChoosePitch(const BlockFilter& filter, const CoderState& state, int at,
                            PitchSpan pitches, std::span<const float> target,
                            std::span<const float> correlation) const {
    const int samples = filter.Samples();
    auto excitation = state.decoder.excitation;
    float* const now = excitation.data() + kExcitationPast + at;
    const std::span block(now, Index(samples));
    int chosen = pitches.first;
    float most = -1;
    for (const int lag : LikelyLags(filter, now, pitches, correlation)) {
        const int index = std::clamp(format_.PitchIndex(4 * lag), pitches.first, pitches.end - 1);
        RepeatPitch(now, samples, format_.Quarters(index));
        Block heard_block;
        filter.Filter(block, heard_block);
        const auto heard = std::span(heard_block).first(Index(samples));
        const float worth = Worth(Product(target, heard), Power(heard));
        if (worth <= most) continue;
        most = worth;
        chosen = index;
    }
    // Fractions change little of what the filter does to their power.
    const auto worth_before_filter = [&](int index) {
        RepeatPitch(now, samples, format_.Quarters(index));
        return Worth(Product(correlation, block), Power(block));
    };
    const int quarters = format_.Quarters(chosen);
    const int first = std::max(format_.PitchIndex(quarters - kNearQuarters + 1), pitches.first);
    most = worth_before_filter(chosen);
    for (int index = first;
         index < pitches.end && format_.Quarters(index) < quarters + kNearQuarters; ++index) {
        const float worth = worth_before_filter(index);
        if (worth <= most) continue;
        most = worth;
        chosen = index;
    }
    return chosen;
}

BlockChoice BlockCoder::Choose(const BlockFilter& filter, const CoderState& state, int at,
                               const PulseType& type, PitchSpan pitches) const {
    const std::size_t samples = Index(filter.Samples());
    Block target_block;
    Block correlation_block{};
    const auto target = std::span(target_block).first(samples);
    const auto correlation = std::span(correlation_block).first(samples);
    filter.Target(state, target);
    filter.Correlate(target, correlation);
    BlockChoice choice;
    choice.pitch = ChoosePitch(filter, state, at, pitches, target, correlation);

    auto excitation = state.decoder.excitation;
    float* const block = excitation.data() + kExcitationPast + at;
    RepeatPitch(block, filter.Samples(), format_.Quarters(choice.pitch));
    Block pitch_heard;
    const auto pitch = std::span(pitch_heard).first(samples);
    filter.Filter({block, samples}, pitch);
    const float pitch_power = Power(pitch);
    const float pitch_product = Product(target, pitch);

    // For the pulses: what the pitch leaves of the target.
    const Block target_correlation = correlation_block;
    Block pitch_correlation{};
    float pitch_norm = 0;
    if (pitch_power > 0) {
        pitch_norm = std::sqrt(pitch_power);
        filter.Correlate(pitch, pitch_correlation);
        const float part = pitch_product / pitch_norm;
        for (std::size_t i = 0; i < samples; ++i) {
            pitch_correlation[i] /= pitch_norm;
            correlation[i] -= part * pitch_correlation[i];
        }
    }
    choice.pulses = SearchPulses(filter.Correlations(), correlation, pitch_correlation, type);
    Block pulse_block{};
    AddPulses(choice.pulses, pulse_block);
    const float pulse_power = filter.Correlations().Power(choice.pulses, filter.Samples());
    const float pulse_product = Product(target_correlation, pulse_block);
    const float mixed_product = pitch_norm * Product(pitch_correlation, pulse_block);

    const float target_power = Power(target);
    const float predicted = std::exp(PredictedGainLog(state.decoder));
    choice.error = std::numeric_limits<float>::max();
    for (int k = 0; k < kGainCount; ++k) {
        const float a = kPitchGains[Index(k)];
        const float b = predicted * pulse_gains_[Index(k)];
        const float error = target_power - 2 * (a * pitch_product + b * pulse_product) +
                            a * a * pitch_power + 2 * a * b * mixed_product + b * b * pulse_power;
        if (error >= choice.error) continue;
        choice.error = error;
        choice.gain = k;
    }
    return choice;
}

void BlockCoder::Apply(const BlockFilter& filter, const BlockChoice& choice, const PulseType& type,
                       int at, CoderState& state, std::span<float> decoded) const {
    const std::size_t samples = Index(filter.Samples());
    float* const block = state.decoder.Frame() + at;
    RepeatPitch(block, filter.Samples(), format_.Quarters(choice.pitch));
    const float pitch_gain = kPitchGains[Index(choice.gain)];
    const float pulse_gain =
        std::exp(PredictedGainLog(state.decoder) + kPulseGainLogs[Index(choice.gain)]);
    Block pulses{};
    AddPulses(choice.pulses, pulses);
    for (std::size_t n = 0; n < samples; ++n)
        block[n] = pitch_gain * block[n] + pulse_gain * pulses[n];
    NotePulseGain(state.decoder, choice.gain, type.blocks);
    filter.Advance(state, at, decoded);
}

NoiseChoice BlockCoder::ChooseNoise(const BlockFilter& filter, const CoderState& state,
                                    std::span<const float> gains, int first_place,
                                    int places) const {
    const std::size_t samples = Index(filter.Samples());
    std::array<float, kFrameSamples> target_block;
    const auto target = std::span(target_block).first(samples);
    filter.Target(state, target);
    const float target_power = Power(target);
    std::array<float, kFrameSamples> correlation_block;
    const auto correlation = std::span(correlation_block).first(samples);
    filter.Correlate(target, correlation);
    std::vector<std::pair<float, int>> likeliest;
    for (int place = first_place; place < first_place + places; ++place) {
        const auto noise = std::span(kNoise).subspan(Index(place), samples);
        likeliest.emplace_back(
            Product(correlation, noise) / std::sqrt(NoisePower(place, noise.size())), place);
    }
    const std::size_t tried = std::min(likeliest.size(), kFilteredNoises);
    std::ranges::partial_sort(likeliest, likeliest.begin() + static_cast<std::ptrdiff_t>(tried),
                              std::greater<>());

    NoiseChoice best;
    best.error = std::numeric_limits<float>::max();
    std::array<float, kFrameSamples> heard_block;
    const auto heard = std::span(heard_block).first(samples);
    for (std::size_t k = 0; k < tried; ++k) {
        const int place = likeliest[k].second;
        filter.Filter(std::span(kNoise).subspan(Index(place), samples), heard);
        const float power = Power(heard);
        const float wanted = kNoisePart * std::sqrt(target_power / power);
        const auto above = std::ranges::lower_bound(gains, wanted);
        auto gain = above == gains.end() ? gains.end() - 1 : above;
        if (gain != gains.begin() && wanted - *(gain - 1) < *gain - wanted) --gain;
        const float error =
            target_power - 2 * *gain * Product(target, heard) + *gain * *gain * power;
        if (error < best.error) best = {place, static_cast<int>(gain - gains.begin()), error};
    }
    return best;
}

void BlockCoder::ApplyNoise(const BlockFilter& filter, const NoiseChoice& choice,
                            std::span<const float> gains, int at, CoderState& state,
                            std::span<float> decoded) const {
    const float gain = gains[Index(choice.gain)];
    for (int n = 0; n < filter.Samples(); ++n)
        state.decoder.Frame()[at + n] = kNoise[Index(choice.place + n)] * gain;
    ForgetPulseGains(state.decoder);
    filter.Advance(state, at, decoded);
}

}  // namespace codecs::wma_voice
