#include "codecs/wma_voice/stream_format.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cmath>

#include "codecs/common/index.h"

namespace codecs::wma_voice {
namespace {

constexpr int kTypes = 17;
constexpr int kClassBits = 3;
constexpr std::size_t kTreeByte = 22;
constexpr std::size_t kFlagsByte = 18;
constexpr std::uint8_t kSixteenValues = 0x10;  // second byte of the flags
constexpr int kNoiseBodyBits = 2 * (8 + 6);
constexpr int kSilenceBodyBits = 8;
constexpr int kGainBits = 7;

// Rare types have long codes; those that are never written too.
constexpr std::array<std::uint8_t, kTypes> kClasses = {
    // type 0 and 1, 2 to 7, 8 to 10, 11 to 13, 14 to 16
    1, 0, 4, 4, 4, 5, 5, 5, 0, 1, 0, 1, 2, 2, 2, 3, 3};

constexpr double kPacketSeconds = 0.5;
constexpr double kShortPacketSeconds = 0.1;
// Packets are no longer than what can be left empty at the end of one, and filled, in silence.
constexpr double kMostPacketBits = 3600;
// Nor shorter than the longest superframe, and another's beginning.
constexpr double kLeastPacketBits = 1500;

int CeilLog2(int value) {
    return static_cast<int>(std::bit_width(static_cast<unsigned>(value - 1)));
}

}  // namespace

StreamFormat::StreamFormat(int sampling_rate, int bit_rate, bool low_delay)
    : sampling_rate_(sampling_rate),
      bit_rate_(bit_rate),
      order_(sampling_rate < 16000 ? 10 : 16),
      packet_bytes_(0),
      bounds_{},
      reach_(0),
      pitch_count_(0),
      pitch_bits_(0),
      pitch_delta_bits_(0) {
    assert(sampling_rate >= 8000 && sampling_rate <= 22097);
    const int least = ((256 * sampling_rate / 400) + 50) >> 8;
    const int most = static_cast<int>((std::int64_t{256} * sampling_rate * 37 / 2000 + 50) >> 8);
    const int range = most - least;
    bounds_ = {least, (range * 25) >> 6, (range * 44) >> 6, most - 1};
    reach_ = (range >> 3) & ~15;
    pitch_count_ = bounds_[2] + bounds_[3] + 1 + 2 * (bounds_[1] - 2 * least);
    pitch_bits_ = CeilLog2(pitch_count_);
    pitch_delta_bits_ = 1 + CeilLog2(reach_);

    const double packet_bits =
        std::clamp((low_delay ? kShortPacketSeconds : kPacketSeconds) * bit_rate, kLeastPacketBits,
                   kMostPacketBits);
    const double superframes = std::floor(packet_bits / SuperframeBits());
    packet_bytes_ = static_cast<int>(superframes * SuperframeBits() / 8);
}

std::array<std::uint8_t, 46> StreamFormat::ExtraData() const {
    std::array<std::uint8_t, 46> data{};
    data[0] = 16;  // bits of a sample
    data[2] = 4;   // the middle loudspeaker
    if (order_ == kMostOrder) data[kFlagsByte + 1] = kSixteenValues;
    BitWriter tree;
    for (const std::uint8_t type_class : kClasses) tree.Put(type_class, kClassBits);
    tree.Align();
    std::copy(tree.Bytes().begin(), tree.Bytes().end(), data.begin() + kTreeByte);
    return data;
}

int StreamFormat::SpillBits() const { return 3 + CeilLog2(packet_bytes_); }

double StreamFormat::SuperframeBits() const {
    return static_cast<double>(bit_rate_) * kSuperframeSamples / sampling_rate_;
}

int StreamFormat::Centre(int last_index) const {
    return std::clamp(last_index, reach_, pitch_count_ - reach_);
}

int StreamFormat::Quarters(int pitch_index) const {
    const auto [t0, t1, t2, t3] = bounds_;
    int index = pitch_index;
    if (index < 4 * (t1 - t0)) return 4 * t0 + index;
    index -= 4 * (t1 - t0);
    if (index < 2 * (t2 - t1)) return 4 * t1 + 2 * index;
    index -= 2 * (t2 - t1);
    return 4 * std::min(t2 + index, t3);
}

int StreamFormat::PitchIndex(int quarters) const {
    const auto [t0, t1, t2, t3] = bounds_;
    if (quarters < 4 * t1) return std::max(quarters - 4 * t0, 0);
    if (quarters < 4 * t2) return 4 * (t1 - t0) + (quarters - 4 * t1 + 1) / 2;
    return 4 * (t1 - t0) + 2 * (t2 - t1) + std::min((quarters + 3) / 4, t3) - t2;
}

Code StreamFormat::TypeCode(int type) const {
    const std::uint8_t type_class = kClasses[Index(type)];
    const auto slot = static_cast<std::uint32_t>(
        std::count(kClasses.begin(), kClasses.begin() + type, type_class));
    const int ones = 2 * type_class;
    const std::uint32_t prefix = (1U << ones) - 1;
    return {prefix << 2 | slot, static_cast<std::uint8_t>(ones + 2)};
}

int StreamFormat::Bits(const PulseType& type) const {
    const int places = kTracks * (1 + type.PlaceBits()) + type.doubled * type.PlaceBits();
    return TypeCode(type.number).length + pitch_bits_ + (type.blocks - 1) * pitch_delta_bits_ +
           type.blocks * (places + kGainBits);
}

int StreamFormat::NoiseBits(int type) const {
    return TypeCode(type).length + (type == kNoiseType ? kNoiseBodyBits : kSilenceBodyBits);
}

}  // namespace codecs::wma_voice
