#include "codecs/wma_standard/frame_coder.h"

#include <algorithm>
#include <cmath>

#include "codecs/common/index.h"
#include "codecs/wma_standard/step_shape.h"

namespace codecs::wma_standard {
namespace {

constexpr int kLeastExponent = -kMostExponentDifference;
constexpr int kMostExponent = 0;
constexpr int kMostGain = 250;

// A quantiser rounds down what lies less than this above a level: small levels take the most bits
// for what they add.
constexpr float kRounding = 0.38F;

// A band is better noise when the values that are left hold less than this part of its energy.
constexpr float kSparse = 0.3F;

constexpr int kLeastNoiseLevel = -19;
constexpr int kMostNoiseLevel = 108;
constexpr float kLeastNoise = 100;  // mean square of a coefficient, below which nobody hears it
constexpr double kNoiseGain = 0.9;  // of the energy that is replaced

// 10^(gain / 20) * 10^(exponent / 16)
class Steps {
  public:
    Steps() {
        for (int gain = 0; gain <= kMostGain; ++gain)
            gains_[Index(gain)] = static_cast<float>(std::pow(10.0, gain / 20.0));
        for (int exponent = kLeastExponent; exponent <= kMostExponent; ++exponent)
            exponents_[Index(exponent - kLeastExponent)] =
                static_cast<float>(std::pow(10.0, exponent / 16.0));
    }
    float Of(int gain, int exponent) const {
        return gains_[Index(gain)] * exponents_[Index(exponent - kLeastExponent)];
    }

  private:
    std::array<float, kMostGain + 1> gains_{};
    std::array<float, kMostExponent - kLeastExponent + 1> exponents_{};
};

float StepOf(int gain, int exponent) {
    static const Steps steps;
    return steps.Of(gain, exponent);
}

}  // namespace

FrameCoder::FrameCoder(const StreamFormat& format) : format_(format), writer_(format) {}

int FrameCoder::Code(Frame& frame, double offset_db) {
    int bits = 0;
    const Block* last = nullptr;  // whose exponents a decoder has
    for (Block& block : frame.blocks) {
        ChooseExponents(block, offset_db);
        while (LimitMagnitudes(block)) {
        }
        for (int c = 0; c < format_.channels; ++c) {
            BlockChannel& channel = block.channels[Index(c)];
            channel.coded = Quantise(block, c);
            ChooseNoise(block, c);
        }
        block.new_exponents = last == nullptr || !HaveSameExponents(block, *last);
        if (block.new_exponents) last = &block;
        bits += writer_.Bits(block);
    }
    return bits;
}

bool FrameCoder::HaveSameExponents(const Block& block, const Block& last) const {
    if (block.size_index != last.size_index) return false;
    for (int c = 0; c < format_.channels; ++c) {
        const BlockChannel& channel = block.channels[Index(c)];
        const BlockChannel& before = last.channels[Index(c)];
        if (channel.coded && !(before.coded && channel.exponents == before.exponents)) return false;
    }
    return true;
}

void FrameCoder::ChooseExponents(Block& block, double offset_db) {
    block.gain = std::clamp(static_cast<int>(std::lround(offset_db + block.step_db)), 1, kMostGain);
    for (int c = 0; c < format_.channels; ++c)
        block.channels[Index(c)].exponents = block.channels[Index(c)].shape;
}

// Makes steps larger where magnitudes would have more bits than an escape has. Whether the gain had
// to change, and with it those bits.
bool FrameCoder::LimitMagnitudes(Block& block) const {
    const float most = static_cast<float>(MostMagnitude(block.gain)) - 0.5F;
    int excess = 0;  // by which an exponent would have to be above 0
    for (int c = 0; c < format_.channels; ++c) {
        BlockChannel& channel = block.channels[Index(c)];
        for (std::size_t b = 0; b < channel.peaks.size(); ++b) {
            const float steps = channel.peaks[b] / StepOf(block.gain, channel.exponents[b]);
            if (steps <= most) continue;
            channel.exponents[b] += static_cast<int>(std::ceil(16 * std::log10(steps / most)));
            excess = std::max(excess, channel.exponents[b]);
        }
    }
    if (excess == 0) return false;
    const int louder = static_cast<int>(std::ceil(excess * kExponentDb));
    const int before = block.gain;
    block.gain = std::min(before + louder, kMostGain);
    const int lower = static_cast<int>(louder / kExponentDb);
    for (int c = 0; c < format_.channels; ++c) {
        auto& exponents = block.channels[Index(c)].exponents;
        for (int& exponent : exponents) exponent = std::clamp(exponent - lower, kLeastExponent, 0);
        *std::max_element(exponents.begin(), exponents.end()) = 0;
    }
    return block.gain != before;
}

// Whether anything is left.
bool FrameCoder::Quantise(Block& block, int channel_index) const {
    BlockChannel& channel = block.channels[Index(channel_index)];
    const auto& bands = format_.blocks[Index(block.size_index)].bands;
    const int coded = static_cast<int>(channel.coefficients.size());
    channel.levels.resize(Index(coded));
    int any = 0;
    for (std::size_t b = 0; b < bands.size(); ++b) {
        const float steps = 1 / StepOf(block.gain, channel.exponents[b]);
        const int end = std::min(bands[b].end, coded);
        for (int k = bands[b].begin; k < end; ++k) {
            const float x = channel.coefficients[Index(k)];
            const int magnitude = static_cast<int>(std::abs(x) * steps + kRounding);
            channel.levels[Index(k)] = static_cast<std::int16_t>(x < 0 ? -magnitude : magnitude);
            any |= magnitude;
        }
    }
    return any != 0;
}

void FrameCoder::ChooseNoise(Block& block, int channel_index) const {
    BlockChannel& channel = block.channels[Index(channel_index)];
    const BlockFormat& sizes = format_.blocks[Index(block.size_index)];
    const std::size_t bands = sizes.high_bands.size();
    channel.noise.assign(bands, false);
    channel.noise_levels.assign(bands, 0);
    for (std::size_t i = 0; i < bands; ++i) {
        const Band& band = sizes.high_bands[i];
        float energy = 0;
        float kept = 0;
        for (int k = band.begin; k < band.end; ++k) {
            const float x = channel.coefficients[Index(k)];
            energy += x * x;
            kept += channel.levels[Index(k)] != 0 ? x * x : 0;
        }
        if (kept > kSparse * energy) continue;
        energy /= static_cast<float>(band.Size());
        if (energy < kLeastNoise) continue;
        channel.noise[i] = channel.coded = true;
        channel.noise_levels[i] =
            static_cast<int>(std::lround(10 * std::log10(kNoiseGain * kNoiseGain * energy)));
    }
    SettleNoiseLevels(sizes, channel);
}

// Noise is told beside the exponents of its band and of the last noise band.
void FrameCoder::SettleNoiseLevels(const BlockFormat& sizes, BlockChannel& channel) const {
    const std::size_t bands = channel.noise.size();
    const auto exponent_of = [&](std::size_t i) -> int& {
        return channel.exponents[Index(sizes.high_exponents[i])];
    };
    // An exponent that noise alone needs costs least when it is that of the band before. What has
    // been quantised keeps its own, so that the one that is 0 stays where no other is.
    for (std::size_t i = 0; i < bands; ++i) {
        const Band& whole = sizes.bands[Index(sizes.high_exponents[i])];
        if (!channel.noise[i] || sizes.high_bands[i].begin != whole.begin || whole.begin == 0)
            continue;
        if (exponent_of(i) == 0 && std::ranges::count(channel.exponents, 0) == 1) continue;
        exponent_of(i) = channel.exponents[Index(sizes.high_exponents[i] - 1)];
    }
    int last_exponent = 0;
    for (std::size_t i = 0; i < bands; ++i)
        if (channel.noise[i]) last_exponent = exponent_of(i);
    // Where differences have no code, noise is softer than it should be, never louder.
    int limit = kMostNoiseLevel;
    for (std::size_t i = 0; i < bands; ++i) {
        if (!channel.noise[i]) continue;
        int& level = channel.noise_levels[i];
        level += static_cast<int>(std::lround(1.25 * (last_exponent - 2 * exponent_of(i))));
        level = std::min(level, limit);
        limit = level + kMostNoiseDifference;
    }
    limit = kMostNoiseLevel;
    for (std::size_t i = bands; i-- > 0;) {
        if (!channel.noise[i]) continue;
        int& level = channel.noise_levels[i];
        level = std::clamp(level, kLeastNoiseLevel, limit);
        limit = level + kMostNoiseDifference;
    }
}

}  // namespace codecs::wma_standard
