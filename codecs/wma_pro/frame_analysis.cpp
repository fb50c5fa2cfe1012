#include "codecs/wma_pro/frame_analysis.h"

#include <algorithm>
#include <cmath>

#include "codecs/common/index.h"
#include "codecs/wma/block_layout.h"
#include "codecs/wma/sample_range.h"

namespace codecs::wma_pro {
namespace {

constexpr float kFullScale = 32768;
constexpr int kLeastAttackSlice = 128;

// What steps become alike when masking counts less: about that of loud music.
constexpr float kUsualStepDb = 80;
// The range of steps that channels of a block can tell together.
constexpr float kLeastStepDb = 10;
constexpr float kMostStepDb = 130;

// As for the standard codec: less than the difference that is usually taken between what tones and
// noise mask gives the best grades.
constexpr double kTonality = 0.5;

constexpr int kHeard = 48000;  // sampling rate above which nothing is heard
// Bits a sample of which what is not heard gets some too.
constexpr double kBitsForAll = 4;

float StepFor(float allowed_noise) { return std::sqrt(12 * allowed_noise); }

}  // namespace

Tuning TuningFor(const StreamFormat& format, double bit_rate) {
    const int full = format.channels - (format.low_frequency_channel >= 0 ? 1 : 0);
    const double heard = std::min(format.sampling_rate, kHeard);
    const double bits = bit_rate / (heard * full);
    Tuning tuning;
    tuning.bandwidth_hz = heard * std::clamp(0.137 + 0.208 * bits, 0.2, 0.455);
    if (bits > kBitsForAll) tuning.bandwidth_hz = 0.5 * format.sampling_rate;
    // With many bits none of the noise is heard: then the least noise is best.
    tuning.masking =
        std::clamp(0.3 + 0.15 * bits, 0.35, 0.6) * std::clamp((12 - bits) / 7, 0.0, 1.0);
    return tuning;
}

FrameAnalysis::FrameAnalysis(const StreamFormat& format, const Tuning& tuning, TaskTeam& team)
    : format_(format),
      tuning_(tuning),
      team_(team),
      attack_slice_(std::max(kLeastAttackSlice, format.blocks.back().size)) {
    for (int c = 0; c < format.channels; ++c) {
        // A decoder is half a frame behind; half a frame more is what the first one overlaps.
        Channel& channel =
            channels_.emplace_back(Channel{{},
                                           wma::AttackDetector(attack_slice_),
                                           std::vector<float>(Index(format.frame_samples)),
                                           {},
                                           {}});
        for (const BlockFormat& sizes : format.blocks)
            channel.sizes.push_back(
                {wma::LappedTransform(sizes.size),
                 wma::MaskingModel(format.sampling_rate, sizes.size, sizes.band_ends, kTonality)});
    }
}

void FrameAnalysis::Add(std::span<const std::span<const float>> samples) {
    for (std::size_t c = 0; c < channels_.size(); ++c) {
        std::vector<float>& to = channels_[c].samples;
        const std::size_t before = to.size();
        to.resize(before + samples[c].size());
        std::transform(samples[c].begin(), samples[c].end(),
                       to.begin() + static_cast<std::ptrdiff_t>(before),
                       [](float sample) { return wma::InRange(sample) * kFullScale; });
    }
}

void FrameAnalysis::AddSilence(int frames) {
    for (Channel& channel : channels_)
        channel.samples.resize(channel.samples.size() + Index(frames * format_.frame_samples));
}

bool FrameAnalysis::HasFrame() const {
    // The next frame's layout must be known too.
    return channels_.front().samples.size() >=
           Index(format_.frame_samples / 2 + 2 * format_.frame_samples);
}

Frame& FrameAnalysis::Next() {
    const int samples = format_.frame_samples;
    if (first_) layout_ = Layout(Index(samples / 2));
    first_ = false;
    const std::vector<int> next_layout = Layout(Index(samples / 2 + samples));
    frame_.blocks.resize(layout_.size());
    for (std::size_t i = 0; i < layout_.size(); ++i) {
        frame_.blocks[i].size_index = layout_[i];
        frame_.blocks[i].channels.resize(channels_.size());
        frame_.blocks[i].pairs.resize(format_.pairs.size());
    }
    const auto size_of = [&](int index) { return format_.blocks[Index(index)].size; };
    team_.Run(format_.channels, [&](int channel) {
        std::size_t begin = Index(samples / 2);
        int previous = previous_index_;
        for (std::size_t i = 0; i < layout_.size(); ++i) {
            const int next = i + 1 < layout_.size() ? layout_[i + 1] : next_layout.front();
            Analyse(frame_.blocks[i], channel, begin, size_of(previous), size_of(next));
            previous = layout_[i];
            begin += Index(size_of(previous));
        }
        std::vector<float>& all = channels_[Index(channel)].samples;
        all.erase(all.begin(), all.begin() + samples);
    });
    previous_index_ = layout_.back();
    layout_ = next_layout;
    return frame_;
}

std::vector<int> FrameAnalysis::Layout(std::size_t frame_begin) {
    std::vector<bool> attacks(Index(format_.frame_samples / attack_slice_));
    for (Channel& channel : channels_)
        channel.detector.Find(std::span<const float>(channel.samples)
                                  .subspan(frame_begin, Index(format_.frame_samples)),
                              attacks);
    return wma::BlockLayout(attacks, static_cast<int>(format_.blocks.size()));
}

void FrameAnalysis::Analyse(Block& block, int channel_index, std::size_t begin, int previous_size,
                            int next_size) {
    const BlockFormat& sizes = format_.blocks[Index(block.size_index)];
    Channel& tools = channels_[Index(channel_index)];
    Size& size = tools.sizes[Index(block.size_index)];
    BlockChannel& channel = block.channels[Index(channel_index)];
    tools.spectrum.resize(Index(sizes.size));
    size.transform.Forward(std::span<const float>(tools.samples)
                               .subspan(begin - Index(sizes.size / 2), Index(2 * sizes.size)),
                           std::min(previous_size, sizes.size), std::min(next_size, sizes.size),
                           tools.spectrum);
    const int kept = Kept(sizes, channel_index);
    channel.coefficients.assign(tools.spectrum.begin(), tools.spectrum.begin() + kept);
    tools.allowed.resize(sizes.band_ends.size());
    size.masking.AllowedNoise(channel.coefficients, tools.allowed);
    channel.steps_db.resize(sizes.band_ends.size());
    for (std::size_t b = 0; b < channel.steps_db.size(); ++b) {
        // What is left out needs no step of its own.
        if (b > 0 && sizes.band_ends[b - 1] >= kept) {
            channel.steps_db[b] = channel.steps_db[b - 1];
            continue;
        }
        const float own_db = 20 * std::log10(StepFor(tools.allowed[b]));
        channel.steps_db[b] =
            std::clamp(kUsualStepDb + static_cast<float>(tuning_.masking) * (own_db - kUsualStepDb),
                       kLeastStepDb, kMostStepDb);
    }
}

int FrameAnalysis::Kept(const BlockFormat& sizes, int channel) const {
    if (channel == format_.low_frequency_channel) return sizes.low_frequency_end;
    return std::min(sizes.size, static_cast<int>(tuning_.bandwidth_hz * 2 * sizes.size /
                                                 format_.sampling_rate));
}

}  // namespace codecs::wma_pro
