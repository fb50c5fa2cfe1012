#include "codecs/wma_voice/spectrum_quantiser.h"

#include <algorithm>
#include <cstddef>
#include <numbers>
#include <utility>

#include "codecs/common/index.h"

namespace codecs::wma_voice {
namespace {

constexpr int kPredictions = 32;
constexpr int kPredictionBits = 5;
constexpr int kTried = 8;  // of them: those that leave the least

using Pair = std::array<float, std::size_t{2} * kMostOrder>;  // of two spectra, interleaved

std::vector<Codebook> Codebooks(std::span<const CodebookTable> tables) {
    return {tables.begin(), tables.end()};
}

int BitsOf(const std::vector<Codebook>& codebooks) {
    int bits = 0;
    for (const Codebook& codebook : codebooks)
        for (int stage = 0; stage < codebook.Stages(); ++stage) bits += codebook.StageBits(stage);
    return bits;
}

// Frequencies that are near to each other make a peak, which is heard best.
LineSpectrum WeightsOf(const LineSpectrum& spectrum, int order) {
    LineSpectrum weights{};
    float below = 0;
    for (int n = 0; n < order; ++n) {
        const float at = spectrum[Index(n)];
        const float above =
            n + 1 < order ? spectrum[Index(n + 1)] : static_cast<float>(std::numbers::pi);
        constexpr float kNearest = 0.01F;
        weights[Index(n)] = 1 / std::max(at - below, kNearest) + 1 / std::max(above - at, kNearest);
        below = at;
    }
    return weights;
}

std::vector<CodebookChoice> SearchAll(const std::vector<Codebook>& codebooks,
                                      std::span<const float> target,
                                      std::span<const float> weights) {
    std::vector<CodebookChoice> choices;
    std::size_t from = 0;
    for (const Codebook& codebook : codebooks) {
        const std::size_t count = Index(codebook.Values());
        choices.push_back(
            codebook.Search(target.subspan(from, count), weights.subspan(from, count)));
        from += count;
    }
    return choices;
}

void Gather(const std::vector<Codebook>& codebooks, const std::vector<CodebookChoice>& choices,
            std::span<float> to) {
    auto place = to.begin();
    for (std::size_t c = 0; c < codebooks.size(); ++c)
        place = std::copy_n(choices[c].vector.begin(), codebooks[c].Values(), place);
}

void Put(const std::vector<Codebook>& codebooks, const std::vector<CodebookChoice>& choices,
         BitWriter& bits) {
    for (std::size_t c = 0; c < codebooks.size(); ++c)
        for (int stage = 0; stage < codebooks[c].Stages(); ++stage)
            bits.Put(choices[c].entries[Index(stage)], codebooks[c].StageBits(stage));
}

}  // namespace

SpectrumQuantiser::SpectrumQuantiser(const StreamFormat& format)
    : order_(format.Order()),
      tables_(SpectrumTablesFor(order_)),
      spectrum_(Codebooks(tables_.spectrum)),
      residuals_(Codebooks(tables_.residuals)),
      bits_(BitsOf(spectrum_) + kPredictionBits + BitsOf(residuals_)),
      before_(FirstSpectrum(order_)) {}

std::span<const float> SpectrumQuantiser::Row(int row) const {
    return tables_.interpolation.subspan(Index(row * order_), Index(order_));
}

SpectrumQuantiser::Chosen SpectrumQuantiser::ChooseResiduals(
    const Spectra& spectra, const Spectra& weights, const LineSpectrum& last_less_mean) const {
    const std::size_t order = Index(order_);
    Pair both_weights{};
    for (std::size_t n = 0; n < 2 * order; ++n) both_weights[n] = weights[n % 2][n / 2];
    std::array<Pair, kPredictions> targets;
    std::array<std::pair<float, int>, kPredictions> left;
    for (int t = 0; t < kPredictions; ++t) {
        float error = 0;
        for (std::size_t n = 0; n < 2 * order; ++n) {
            const std::size_t i = n / 2;
            const float difference = before_[i] - tables_.mean[i] - last_less_mean[i];
            const float predicted = tables_.mean[i] + last_less_mean[i] +
                                    Row(2 * t + static_cast<int>(n % 2))[i] * difference;
            const float residual = predicted - spectra[n % 2][i];
            targets[Index(t)][n] = residual;
            error += both_weights[n] * residual * residual;
        }
        left[Index(t)] = {error, t};
    }
    std::partial_sort(left.begin(), left.begin() + kTried, left.end());
    Chosen best;
    for (int k = 0; k < kTried; ++k) {
        const int t = left[Index(k)].second;
        Chosen tried{t, SearchAll(residuals_, targets[Index(t)], both_weights), 0};
        for (const CodebookChoice& choice : tried.residuals) tried.error += choice.error;
        if (k == 0 || tried.error < best.error) best = std::move(tried);
    }
    return best;
}

Spectra SpectrumQuantiser::Quantise(const Spectra& spectra, BitWriter& bits) {
    const std::size_t order = Index(order_);
    Spectra weights;
    for (std::size_t f = 0; f < spectra.size(); ++f) weights[f] = WeightsOf(spectra[f], order_);
    LineSpectrum target{};
    for (std::size_t i = 0; i < order; ++i) target[i] = spectra.back()[i] - tables_.mean[i];
    const auto last = SearchAll(spectrum_, target, weights.back());
    LineSpectrum last_less_mean{};
    Gather(spectrum_, last, last_less_mean);
    const Chosen chosen = ChooseResiduals(spectra, weights, last_less_mean);
    Put(spectrum_, last, bits);
    bits.Put(static_cast<std::uint32_t>(chosen.prediction), kPredictionBits);
    Put(residuals_, chosen.residuals, bits);

    Pair residual{};
    Gather(residuals_, chosen.residuals, residual);
    Spectra quantised{};
    for (std::size_t i = 0; i < order; ++i) {
        const float difference = before_[i] - tables_.mean[i] - last_less_mean[i];
        for (std::size_t f = 0; f < 2; ++f)
            quantised[f][i] = tables_.mean[i] +
                              (Row(2 * chosen.prediction + static_cast<int>(f))[i] * difference +
                               last_less_mean[i]) -
                              residual[2 * i + f];
        quantised[2][i] = tables_.mean[i] + last_less_mean[i];
    }
    for (LineSpectrum& spectrum : quantised) Stabilise(std::span(spectrum).first(order));
    before_ = quantised.back();
    return quantised;
}

}  // namespace codecs::wma_voice
