#include "codecs/wma_standard/frame_writer.h"

#include <algorithm>

#include "codecs/common/index.h"

namespace codecs::wma_standard {
namespace {

constexpr int kFirstNoiseLevelBits = 7;
constexpr int kFirstNoiseLevel = -19;
constexpr int kGainBits = 7;
constexpr int kGainGroup = 127;

// Calls `use` with the difference of each exponent to the one before. Exponents only matter beside
// the largest of them, so the first one is what it had best be.
template <typename Use>
void ForEachDifference(std::span<const int> exponents, const Use& use) {
    int previous = exponents.front();
    for (const int exponent : exponents) {
        use(exponent - previous);
        previous = exponent;
    }
}

bool AnyCoded(const Block& block, int channels) {
    return std::any_of(block.channels.begin(), block.channels.begin() + channels,
                       [](const BlockChannel& channel) { return channel.coded; });
}

// Calls `use(first, value)` for the noise bands of a channel.
template <typename Use>
void ForEachNoiseLevel(const BlockChannel& channel, const Use& use) {
    bool first = true;
    int previous = 0;
    for (std::size_t i = 0; i < channel.noise.size(); ++i) {
        if (!channel.noise[i]) continue;
        use(first, first ? channel.noise_levels[i] - kFirstNoiseLevel
                         : channel.noise_levels[i] - previous);
        previous = channel.noise_levels[i];
        first = false;
    }
}

}  // namespace

int ExponentBits(std::span<const int> exponents) {
    int bits = 0;
    ForEachDifference(exponents,
                      [&](int difference) { bits += ExponentDifferenceCode(difference).length; });
    return bits;
}

FrameWriter::FrameWriter(const StreamFormat& format)
    : format_(format),
      codes_{CoefficientCodes(format.coefficient_tables[0], format.frame_samples),
             CoefficientCodes(format.coefficient_tables[1], format.frame_samples)} {}

// The levels outside of noise bands.
std::span<const std::int16_t> FrameWriter::Sequence(const Block& block, int channel) {
    const BlockChannel& from = block.channels[Index(channel)];
    if (std::find(from.noise.begin(), from.noise.end(), true) == from.noise.end())
        return from.levels;
    const BlockFormat& sizes = format_.blocks[Index(block.size_index)];
    sequence_.assign(from.levels.begin(), from.levels.begin() + sizes.high_bands.front().begin);
    for (std::size_t i = 0; i < from.noise.size(); ++i) {
        const Band& band = sizes.high_bands[i];
        if (!from.noise[i])
            sequence_.insert(sequence_.end(), from.levels.begin() + band.begin,
                             from.levels.begin() + band.end);
    }
    return sequence_;
}

const CoefficientCodes& FrameWriter::CodesFor(const Block& block, int channel) const {
    return codes_[block.sum_difference && channel == 1 ? 1 : 0];
}

int FrameWriter::CoefficientBits(const Block& block, int channel) {
    return CodesFor(block, channel).Bits(Sequence(block, channel), block.gain);
}

int FrameWriter::Bits(const Block& block) {
    const int channels = format_.channels;
    int bits = format_.size_bits + (channels == 2 ? 1 : 0) + channels;
    if (!AnyCoded(block, channels)) return bits;
    bits += kGainBits * (1 + (block.gain - 1) / kGainGroup);
    if (block.size_index > 0) ++bits;
    for (int c = 0; c < channels; ++c) {
        const BlockChannel& channel = block.channels[Index(c)];
        if (!channel.coded) continue;
        bits += static_cast<int>(channel.noise.size());
        ForEachNoiseLevel(channel, [&](bool first, int value) {
            bits += first ? kFirstNoiseLevelBits : NoiseDifferenceCode(value).length;
        });
        if (block.new_exponents) bits += ExponentBits(channel.exponents);
        bits += CoefficientBits(block, c);
    }
    return bits;
}

void FrameWriter::Write(const Frame& frame, BitWriter& writer) {
    for (std::size_t i = 0; i < frame.blocks.size(); ++i) {
        const int next =
            i + 1 < frame.blocks.size() ? frame.blocks[i + 1].size_index : frame.next_index;
        WriteBlock(frame.blocks[i], next, writer);
    }
}

void FrameWriter::WriteBlock(const Block& block, int next_index, BitWriter& writer) {
    const int channels = format_.channels;
    writer.Put(static_cast<std::uint32_t>(next_index), format_.size_bits);
    if (channels == 2) writer.Put(block.sum_difference ? 1 : 0, 1);
    for (int c = 0; c < channels; ++c) writer.Put(block.channels[Index(c)].coded ? 1 : 0, 1);
    if (!AnyCoded(block, channels)) return;
    int gain = block.gain - 1;
    for (; gain >= kGainGroup; gain -= kGainGroup) writer.Put(kGainGroup, kGainBits);
    writer.Put(static_cast<std::uint32_t>(gain), kGainBits);
    WriteNoise(block, writer);
    if (block.size_index > 0) writer.Put(block.new_exponents ? 1 : 0, 1);
    if (block.new_exponents) {
        for (int c = 0; c < channels; ++c) {
            const BlockChannel& channel = block.channels[Index(c)];
            if (!channel.coded) continue;
            ForEachDifference(channel.exponents, [&](int difference) {
                writer.Put(ExponentDifferenceCode(difference));
            });
        }
    }
    for (int c = 0; c < channels; ++c)
        if (block.channels[Index(c)].coded)
            CodesFor(block, c).Write(Sequence(block, c), block.gain, writer);
}

void FrameWriter::WriteNoise(const Block& block, BitWriter& writer) const {
    const auto for_each_coded = [&](const auto& write) {
        for (int c = 0; c < format_.channels; ++c)
            if (block.channels[Index(c)].coded) write(block.channels[Index(c)]);
    };
    for_each_coded([&](const BlockChannel& channel) {
        for (const bool noise : channel.noise) writer.Put(noise ? 1 : 0, 1);
    });
    for_each_coded([&](const BlockChannel& channel) {
        ForEachNoiseLevel(channel, [&](bool first, int value) {
            if (first)
                writer.Put(static_cast<std::uint32_t>(value), kFirstNoiseLevelBits);
            else
                writer.Put(NoiseDifferenceCode(value));
        });
    });
}

}  // namespace codecs::wma_standard
