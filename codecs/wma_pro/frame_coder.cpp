#include "codecs/wma_pro/frame_coder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <span>

#include "codecs/common/index.h"
#include "codecs/wma/log_sum.h"
#include "codecs/wma_pro/code_tables.h"
#include "codecs/wma_pro/scale_factors.h"

namespace codecs::wma_pro {
namespace {

// Two channels alone: decoders multiply what is not mixed by this, beside what is.
constexpr float kPairGain = 181.0F / 128;
// With more channels: decoders multiply sum and difference by it.
constexpr float kMixedGain = 0.70703125F;

// A quantiser rounds down what lies less than this above a level: small levels take the most bits
// for what they add.
constexpr float kRounding = 0.42F;

// Factors that miss what is wanted by no more than this stay as they were in the block before.
constexpr int kToleranceDb = 3;

constexpr double kDbPerBit = 6.0206;

// 10^(step / 20)
class Steps {
  public:
    Steps() {
        for (int db = kLeast; db <= kMost; ++db)
            steps_[Index(db - kLeast)] = static_cast<float>(std::pow(10.0, db / 20.0));
    }
    float Of(int db) const { return steps_[Index(std::clamp(db, kLeast, kMost) - kLeast)]; }

  private:
    static constexpr int kLeast = -60;
    static constexpr int kMost = 300;

    std::array<float, kMost - kLeast + 1> steps_{};
};

// One of how many levels there are to a unit.
float InverseStep(int db) {
    static const Steps steps;
    return 1 / steps.Of(db);
}

void QuantiseAll(std::span<const float> values, float steps, std::span<int> levels) {
    for (std::size_t k = 0; k < values.size(); ++k) {
        const float x = values[k] * steps;
        levels[k] = static_cast<int>(x + std::copysign(kRounding, x));
    }
}

bool AnyTransmitted(const Block& block) {
    return std::ranges::any_of(block.channels, &BlockChannel::transmitted);
}

// Calls `use(band, first, count)` for the bands that have coefficients.
template <typename Use>
void ForEachBand(const BlockFormat& sizes, std::size_t coefficients, const Use& use) {
    std::size_t begin = 0;
    for (std::size_t b = 0; b < sizes.band_ends.size() && begin < coefficients; ++b) {
        const std::size_t end = std::min(Index(sizes.band_ends[b]), coefficients);
        use(b, begin, end - begin);
        begin = end;
    }
}

}  // namespace

FrameCoder::FrameCoder(const StreamFormat& format, int scale_step_db, TaskTeam& team)
    : format_(format),
      scale_step_db_(scale_step_db),
      team_(team),
      writer_(format, scale_step_db),
      codes_(Index(format.channels)) {
    for (std::vector<CoefficientCodes>& codes : codes_)
        for (const BlockFormat& sizes : format.blocks) codes.emplace_back(sizes.size);
}

// How much larger steps are told than they are for 16-bit samples.
double FrameCoder::StepShift(const Block& block) const {
    const bool mixes = format_.channels == 2 && block.pairs.front().mixes;
    return kDbPerBit * (format_.bits_per_sample - 16) - (mixes ? kDbPerBit / 2 : 0);
}

float FrameCoder::StepsFor(int step_db, const Block& block) const {
    const bool mixes = format_.channels == 2 && block.pairs.front().mixes;
    return InverseStep(step_db) * static_cast<float>(1 << (format_.bits_per_sample - 16)) /
           (mixes ? kPairGain : 1);
}

void FrameCoder::ChooseMixing(Frame& frame, double offset_db) const {
    for (Block& block : frame.blocks)
        for (std::size_t i = 0; i < block.pairs.size(); ++i) MixPair(block, i, offset_db);
}

void FrameCoder::MixPair(Block& block, std::size_t pair, double offset_db) const {
    constexpr double kGroupBits = 6;  // that switching a band must be worth
    const BlockFormat& sizes = format_.blocks[Index(block.size_index)];
    const BlockChannel& left = block.channels[Index(format_.pairs[pair][0])];
    const BlockChannel& right = block.channels[Index(format_.pairs[pair][1])];
    BlockPair& to = block.pairs[pair];
    to.mixed.assign(sizes.band_ends.size(), false);
    double gain = 0;  // bits, roughly
    const auto steps_for = [&](const BlockChannel& channel, std::size_t band) {
        return static_cast<float>(
            std::pow(10.0, -(static_cast<double>(channel.steps_db[band]) + offset_db) / 20));
    };
    ForEachBand(sizes, left.coefficients.size(),
                [&](std::size_t b, std::size_t begin, std::size_t count) {
                    const float left_steps = steps_for(left, b);
                    const float right_steps = steps_for(right, b);
                    wma::LogSum apart, together;
                    const auto levels = [](float value) {
                        return static_cast<double>(1 + std::abs(value));
                    };
                    for (std::size_t k = begin; k < begin + count; ++k) {
                        const float l = left.coefficients[k] * left_steps;
                        const float r = right.coefficients[k] * right_steps;
                        apart.Add(levels(l) * levels(r));
                        together.Add(levels((l + r) * kMixedGain) * levels((r - l) * kMixedGain));
                    }
                    const double bits = apart.Get() - together.Get();
                    to.mixed[b] = bits > 0;
                    if (to.mixed[b]) gain += bits;
                });
    to.mixes = gain > kGroupBits;
    if (!to.mixes) to.mixed.assign(to.mixed.size(), false);
    // What is silent does as what is below it, so that often all bands are alike.
    std::size_t coded = 0;
    ForEachBand(sizes, left.coefficients.size(),
                [&](std::size_t b, std::size_t, std::size_t) { coded = b + 1; });
    if (coded > 0)
        std::fill(to.mixed.begin() + static_cast<std::ptrdiff_t>(coded), to.mixed.end(),
                  to.mixed[coded - 1]);
}

int FrameCoder::Code(Frame& frame, double offset_db) {
    std::vector<Sent> sent(Index(format_.channels));
    for (Block& block : frame.blocks) CodeBlock(block, offset_db, sent);
    return writer_.Bits(frame);
}

void FrameCoder::CodeBlock(Block& block, double offset_db, std::vector<Sent>& sent) {
    team_.Run(format_.channels, [&](int c) {
        ChooseFactors(block, c, offset_db, sent[Index(c)]);
        Quantise(block, c);
    });
    for (std::size_t i = 0; i < block.pairs.size(); ++i)
        if (block.pairs[i].mixes) QuantisePair(block, i);
    for (BlockChannel& channel : block.channels)
        channel.transmitted =
            std::ranges::any_of(channel.levels, [](int level) { return level != 0; });
    if (!AnyTransmitted(block)) return;
    team_.Run(format_.channels, [&](int c) {
        BlockChannel& channel = block.channels[Index(c)];
        if (channel.form == ScaleFactorForm::Whole) FreeFactors(block, c);
        if (channel.form != ScaleFactorForm::Reused)
            sent[Index(c)] = {channel.scale_factors, block.size_index};
        if (channel.transmitted)
            channel.plan = codes_[Index(c)][Index(block.size_index)].Plan(channel.levels);
    });
}

void FrameCoder::ChooseFactors(Block& block, int channel_index, double offset_db,
                               const Sent& sent) const {
    const BlockFormat& sizes = format_.blocks[Index(block.size_index)];
    BlockChannel& channel = block.channels[Index(channel_index)];
    const double shift = offset_db + StepShift(block);
    std::vector<int>& factors = channel.scale_factors;
    factors.clear();
    for (const float step : channel.steps_db)
        factors.push_back(static_cast<int>(std::lround((step + shift) / scale_step_db_)));
    const int least = std::ranges::min(factors);
    for (int& factor : factors) factor = std::min(factor, least + kMostScaleFactorDifference);
    int common = 0;  // what factors lack to steps
    channel.form = ScaleFactorForm::Whole;
    if (!sent.factors.empty()) {
        const BlockFormat& from = format_.blocks[Index(sent.size_index)];
        std::vector<int>& known = channel.known_factors;
        known =
            ResampleFactors(sent.factors, from.band_ends, from.size, sizes.band_ends, sizes.size);
        std::vector<int> differences;
        ForEachBand(sizes, std::max<std::size_t>(channel.coefficients.size(), 1),
                    [&](std::size_t b, std::size_t, std::size_t) {
                        differences.push_back(factors[b] - known[b]);
                    });
        const auto middle = differences.begin() + std::ssize(differences) / 2;
        std::ranges::nth_element(differences, middle);
        common = *middle;
        channel.form = ScaleFactorForm::Reused;
        for (std::size_t b = 0; b < factors.size(); ++b) {
            const int change = factors[b] - common - known[b];
            if (b >= differences.size() || std::abs(change) * scale_step_db_ <= kToleranceDb) {
                factors[b] = known[b];
                continue;
            }
            factors[b] = known[b] + change;
            channel.form = ScaleFactorForm::Changed;
        }
    }
    channel.step_db = scale_step_db_ * (common + std::ranges::max(factors));
}

void FrameCoder::Quantise(Block& block, int channel_index) const {
    BlockChannel& channel = block.channels[Index(channel_index)];
    const BlockFormat& sizes = format_.blocks[Index(block.size_index)];
    channel.levels.resize(channel.coefficients.size());
    const int largest = std::ranges::max(channel.scale_factors);
    ForEachBand(sizes, channel.coefficients.size(),
                [&](std::size_t b, std::size_t begin, std::size_t count) {
                    const int step =
                        channel.step_db - scale_step_db_ * (largest - channel.scale_factors[b]);
                    QuantiseAll(std::span(channel.coefficients).subspan(begin, count),
                                StepsFor(step, block),
                                std::span(channel.levels).subspan(begin, count));
                });
}

// Decoders mix levels, before they are multiplied by the steps of their channels.
void FrameCoder::QuantisePair(Block& block, std::size_t pair) const {
    const BlockFormat& sizes = format_.blocks[Index(block.size_index)];
    BlockChannel& left = block.channels[Index(format_.pairs[pair][0])];
    BlockChannel& right = block.channels[Index(format_.pairs[pair][1])];
    const int left_largest = std::ranges::max(left.scale_factors);
    const int right_largest = std::ranges::max(right.scale_factors);
    const float gain = format_.channels == 2 ? kPairGain / 2 : 0.5F / kMixedGain;
    std::array<std::vector<float>, 2> mixed;
    ForEachBand(sizes, left.coefficients.size(),
                [&](std::size_t b, std::size_t begin, std::size_t count) {
                    if (!block.pairs[pair].mixed[b]) return;
                    const int left_step =
                        left.step_db - scale_step_db_ * (left_largest - left.scale_factors[b]);
                    const int right_step =
                        right.step_db - scale_step_db_ * (right_largest - right.scale_factors[b]);
                    const float left_steps = StepsFor(left_step, block) * gain;
                    const float right_steps = StepsFor(right_step, block) * gain;
                    for (std::vector<float>& values : mixed) values.resize(count);
                    for (std::size_t k = 0; k < count; ++k) {
                        const float l = left.coefficients[begin + k] * left_steps;
                        const float r = right.coefficients[begin + k] * right_steps;
                        mixed[0][k] = l + r;
                        mixed[1][k] = r - l;
                    }
                    QuantiseAll(mixed[0], 1, std::span(left.levels).subspan(begin, count));
                    QuantiseAll(mixed[1], 1, std::span(right.levels).subspan(begin, count));
                });
}

// A band without levels has the factor that takes the fewest bits.
void FrameCoder::FreeFactors(Block& block, int channel_index) const {
    const BlockFormat& sizes = format_.blocks[Index(block.size_index)];
    BlockChannel& channel = block.channels[Index(channel_index)];
    std::vector<bool> used(channel.scale_factors.size(), false);
    const auto mark = [&](const BlockChannel& from, auto&& counts) {
        ForEachBand(
            sizes, from.levels.size(), [&](std::size_t b, std::size_t begin, std::size_t count) {
                const auto levels = std::span(from.levels).subspan(begin, count);
                if (counts(b) && std::ranges::any_of(levels, [](int level) { return level != 0; }))
                    used[b] = true;
            });
    };
    mark(channel, [](std::size_t) { return true; });
    for (std::size_t i = 0; i < block.pairs.size(); ++i) {
        const auto [left, right] = format_.pairs[i];
        if (channel_index != left && channel_index != right) continue;
        const int other = channel_index == left ? right : left;
        mark(block.channels[Index(other)],
             [&](std::size_t b) { return static_cast<bool>(block.pairs[i].mixed[b]); });
    }
    const auto first = std::ranges::find(used, true);
    const int largest = std::ranges::max(channel.scale_factors);
    if (first == used.end()) {
        std::ranges::fill(channel.scale_factors, largest);
        return;
    }
    int last = channel.scale_factors[static_cast<std::size_t>(first - used.begin())];
    for (std::size_t b = 0; b < used.size(); ++b) {
        if (used[b])
            last = channel.scale_factors[b];
        else
            channel.scale_factors[b] = last;
    }
    channel.step_db -= scale_step_db_ * (largest - std::ranges::max(channel.scale_factors));
}

}  // namespace codecs::wma_pro
