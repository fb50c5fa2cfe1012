#include "codecs/wma_standard/frame_analysis.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "codecs/common/index.h"
#include "codecs/wma/block_layout.h"
#include "codecs/wma/log_sum.h"
#include "codecs/wma/sample_range.h"
#include "codecs/wma_standard/step_shape.h"

namespace codecs::wma_standard {
namespace {

constexpr float kFullScale = 32768;
constexpr int kAttackSlice = 128;

// What steps become alike when masking counts less: about that of loud music.
constexpr float kUsualStepDb = 80;

float StepFor(float allowed_noise) { return std::sqrt(12 * allowed_noise); }

// How the ear is heeded, from a sampling rate on. Measured by bench/audio: music and single
// instruments at 32 to 192 kbit/s, speech at 5 to 16. Both signal to noise and PEAQ's grade are
// best with less than the difference that is usually taken between what tones and noise mask. Steps
// that follow masking closer gain little grade for much noise.
struct Ear {
    int sampling_rate;
    double tonality;
    double masking;  // how far steps follow it, without any bits for a sample ...
    double least_masking;
};
constexpr double kMaskingByBit = 0.15;  // ... and with each of them
constexpr double kMostMasking = 0.6;
constexpr Ear kEars[] = {{22050, 0.1, 0.36, 0.46}, {0, 0.5, 0.45, 0.5}};

// How wide sound is best at the rate of one channel; two need 1.25 times as much. From 16 kbit/s on
// where PEAQ grades best (bench/audio, on the clips that docs/audio.md names). Grades do not heed
// what is missing below 8 kHz; there it is the least that keeps speech clear.
struct Bandwidth {
    double bit_rate;
    double hz;
};
constexpr double kBothChannels = 1.25;
constexpr Bandwidth kBandwidths[] = {
    {5000, 2300},   {8000, 2900},    {16000, 4900},   {20000, 6200},   {25600, 8400},
    {51200, 13000}, {102400, 17200}, {153600, 18200}, {256000, 20000},
};

double BandwidthHz(const StreamFormat& format) {
    const double rate = 8.0 * format.bytes_per_second / (format.channels == 2 ? kBothChannels : 1);
    const auto* above = std::ranges::find_if(
        kBandwidths, [&](const Bandwidth& row) { return row.bit_rate >= rate; });
    if (above == std::begin(kBandwidths)) return above->hz;
    const Bandwidth& below = above[-1];
    if (above == std::end(kBandwidths)) return below.hz;
    return below.hz +
           (above->hz - below.hz) * (rate - below.bit_rate) / (above->bit_rate - below.bit_rate);
}

std::vector<int> BandEnds(const BlockFormat& sizes) {
    std::vector<int> ends;
    for (const Band& band : sizes.bands) ends.push_back(band.end);
    return ends;
}

}  // namespace

Tuning TuningFor(const StreamFormat& format) {
    const double bits = 8.0 * format.bytes_per_second / (format.sampling_rate * format.channels);
    Tuning tuning;
    tuning.bandwidth_hz = BandwidthHz(format);
    const Ear& ear = *std::ranges::find_if(
        kEars, [&](const Ear& row) { return format.sampling_rate >= row.sampling_rate; });
    tuning.tonality = ear.tonality;
    tuning.masking =
        std::clamp(ear.masking + kMaskingByBit * bits, ear.least_masking, kMostMasking);
    return tuning;
}

FrameAnalysis::FrameAnalysis(const StreamFormat& format, const Tuning& tuning)
    : format_(format),
      tuning_(tuning),
      detectors_(Index(format.channels), wma::AttackDetector(kAttackSlice)),
      // A decoder is one frame and a half behind; half a frame more is what the first one overlaps.
      samples_(Index(format.channels), std::vector<float>(Index(2 * format.frame_samples))),
      spectra_(Index(format.channels)) {
    for (const BlockFormat& sizes : format.blocks)
        sizes_.push_back({wma::LappedTransform(sizes.size),
                          wma::MaskingModel(format.sampling_rate, sizes.size, BandEnds(sizes),
                                            tuning.tonality)});
    layout_ = Layout(Index(format.frame_samples / 2));
}

void FrameAnalysis::Add(std::span<const std::span<const float>> samples) {
    for (std::size_t c = 0; c < samples_.size(); ++c) {
        const std::size_t before = samples_[c].size();
        samples_[c].resize(before + samples[c].size());
        std::transform(samples[c].begin(), samples[c].end(),
                       samples_[c].begin() + static_cast<std::ptrdiff_t>(before),
                       [](float sample) { return wma::InRange(sample) * kFullScale; });
    }
}

void FrameAnalysis::AddSilence(int frames) {
    for (std::vector<float>& channel : samples_)
        channel.resize(channel.size() + Index(frames * format_.frame_samples));
}

bool FrameAnalysis::HasFrame() const {
    // The next frame's layout must be known too.
    return samples_.front().size() >= Index(format_.frame_samples / 2 + 2 * format_.frame_samples);
}

Frame& FrameAnalysis::Next() {
    const int samples = format_.frame_samples;
    const std::vector<int> next_layout = Layout(Index(samples / 2 + samples));
    frame_.previous_index = previous_index_;
    frame_.next_index = next_layout.front();
    frame_.blocks.resize(layout_.size());
    std::size_t begin = Index(samples / 2);
    const auto size_of = [&](int index) { return format_.blocks[Index(index)].size; };
    for (std::size_t i = 0; i < layout_.size(); ++i) {
        Block& block = frame_.blocks[i];
        block.size_index = layout_[i];
        const int next_index = i + 1 < layout_.size() ? layout_[i + 1] : frame_.next_index;
        Analyse(block, begin, size_of(previous_index_), size_of(next_index));
        ChooseShapes(block, i > 0 ? &frame_.blocks[i - 1] : nullptr);
        previous_index_ = block.size_index;
        begin += Index(size_of(block.size_index));
    }
    layout_ = next_layout;
    for (std::vector<float>& channel : samples_)
        channel.erase(channel.begin(), channel.begin() + samples);
    return frame_;
}

std::vector<int> FrameAnalysis::Layout(std::size_t frame_begin) {
    std::vector<bool> attacks(Index(format_.frame_samples / kAttackSlice));
    for (std::size_t c = 0; c < samples_.size(); ++c)
        detectors_[c].Find(
            std::span<const float>(samples_[c]).subspan(frame_begin, Index(format_.frame_samples)),
            attacks);
    return wma::BlockLayout(attacks, static_cast<int>(format_.blocks.size()));
}

void FrameAnalysis::Transform(const Block& block, std::size_t begin, int previous_size,
                              int next_size) {
    const BlockFormat& sizes = format_.blocks[Index(block.size_index)];
    Size& tools = sizes_[Index(block.size_index)];
    const int kept = Kept(sizes);
    for (std::size_t c = 0; c < spectra_.size(); ++c) {
        Spectrum& spectrum = spectra_[c];
        spectrum.coefficients.resize(Index(sizes.size));
        tools.transform.Forward(std::span<const float>(samples_[c])
                                    .subspan(begin - Index(sizes.size / 2), Index(2 * sizes.size)),
                                std::min(previous_size, sizes.size),
                                std::min(next_size, sizes.size), spectrum.coefficients);
        spectrum.coefficients.resize(Index(sizes.coded));
        std::fill(spectrum.coefficients.begin() + kept, spectrum.coefficients.end(), 0.0F);
        spectrum.allowed.resize(sizes.bands.size());
        tools.masking.AllowedNoise(spectrum.coefficients, spectrum.allowed);
    }
}

void FrameAnalysis::Analyse(Block& block, std::size_t begin, int previous_size, int next_size) {
    const BlockFormat& sizes = format_.blocks[Index(block.size_index)];
    const int kept = Kept(sizes);
    Transform(block, begin, previous_size, next_size);
    block.sum_difference = format_.channels == 2 && SumIsCheaper(sizes);
    if (block.sum_difference) MixChannels(sizes);
    for (std::size_t c = 0; c < spectra_.size(); ++c) {
        BlockChannel& channel = block.channels[c];
        channel.coefficients = spectra_[c].coefficients;
        channel.peaks.resize(sizes.bands.size());
        for (std::size_t b = 0; b < sizes.bands.size(); ++b) {
            const Band& band = sizes.bands[b];
            channel.peaks[b] = 0;
            for (int k = band.begin; k < std::min(band.end, kept); ++k)
                channel.peaks[b] =
                    std::max(channel.peaks[b], std::abs(channel.coefficients[Index(k)]));
        }
    }
}

// @param before  the block before, null at the start of a frame
void FrameAnalysis::ChooseShapes(Block& block, const Block* before) {
    const BlockFormat& sizes = format_.blocks[Index(block.size_index)];
    block.step_db = WeighSteps(sizes);
    double cost = 0;
    for (std::size_t c = 0; c < spectra_.size(); ++c) {
        std::vector<int>& shape = block.channels[c].shape;
        shape.resize(sizes.bands.size());
        cost += ChooseShape(spectra_[c].steps, weights_, shape);
    }
    if (before == nullptr || before->size_index != block.size_index) return;
    double cost_of_last = 0;
    for (std::size_t c = 0; c < spectra_.size(); ++c)
        cost_of_last += ShapeLoss(spectra_[c].steps, weights_, before->channels[c].shape);
    if (cost_of_last > cost) return;
    for (std::size_t c = 0; c < spectra_.size(); ++c)
        block.channels[c].shape = before->channels[c].shape;
}

// Makes the allowed noise wanted steps, in exponents below the largest; that one, in dB.
float FrameAnalysis::WeighSteps(const BlockFormat& sizes) {
    const std::size_t bands = sizes.bands.size();
    const int kept = Kept(sizes);
    weights_.resize(bands);
    for (std::size_t b = 0; b < bands; ++b)
        weights_[b] = static_cast<float>(tuning_.exponent_weight) *
                      static_cast<float>(
                          std::max(std::min(sizes.bands[b].end, kept) - sizes.bands[b].begin, 0));
    float most = std::numeric_limits<float>::lowest();
    for (Spectrum& spectrum : spectra_) {
        spectrum.steps.resize(bands);
        for (std::size_t b = 0; b < bands; ++b) {
            const float own_db = 20 * std::log10(StepFor(spectrum.allowed[b]));
            // What is left out needs no step of its own.
            spectrum.steps[b] =
                b > 0 && weights_[b] <= 0
                    ? spectrum.steps[b - 1]
                    : kUsualStepDb + static_cast<float>(tuning_.masking) * (own_db - kUsualStepDb);
            most = std::max(most, spectrum.steps[b]);
        }
    }
    for (Spectrum& spectrum : spectra_)
        for (float& step : spectrum.steps) step = (step - most) / static_cast<float>(kExponentDb);
    return most;
}

int FrameAnalysis::Kept(const BlockFormat& sizes) const {
    return std::min(sizes.coded, static_cast<int>(tuning_.bandwidth_hz * 2 * sizes.size /
                                                  format_.sampling_rate));
}

bool FrameAnalysis::SumIsCheaper(const BlockFormat& sizes) {
    const Spectrum& left = spectra_[0];
    const Spectrum& right = spectra_[1];
    // Bits, roughly.
    wma::LogSum apart, together;
    const auto levels = [](float value, float step) {
        return static_cast<double>(1 + std::abs(value) * step);
    };
    for (std::size_t b = 0; b < sizes.bands.size(); ++b) {
        const float left_steps = 1 / StepFor(left.allowed[b]);
        const float right_steps = 1 / StepFor(right.allowed[b]);
        // Errors of sum and difference both reach both channels.
        const float steps = std::max(left_steps, right_steps) * std::sqrt(2.0F);
        for (int k = sizes.bands[b].begin; k < std::min(sizes.bands[b].end, sizes.coded); ++k) {
            const float l = left.coefficients[Index(k)];
            const float r = right.coefficients[Index(k)];
            apart.Add(levels(l, left_steps));
            apart.Add(levels(r, right_steps));
            together.Add(levels((l + r) / 2, steps));
            together.Add(levels((l - r) / 2, steps));
        }
    }
    return together.Get() < apart.Get();
}

void FrameAnalysis::MixChannels(const BlockFormat& sizes) {
    Spectrum& left = spectra_[0];
    Spectrum& right = spectra_[1];
    for (std::size_t k = 0; k < left.coefficients.size(); ++k) {
        const float l = left.coefficients[k];
        const float r = right.coefficients[k];
        left.coefficients[k] = (l + r) / 2;
        right.coefficients[k] = (l - r) / 2;
    }
    for (std::size_t b = 0; b < sizes.bands.size(); ++b)
        left.allowed[b] = right.allowed[b] = std::min(left.allowed[b], right.allowed[b]) / 2;
}

}  // namespace codecs::wma_standard
