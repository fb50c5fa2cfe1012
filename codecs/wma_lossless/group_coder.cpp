#include "codecs/wma_lossless/group_coder.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <limits>

#include "codecs/common/index.h"

namespace codecs::wma_lossless {
namespace {

// Of the speeds, what frames are compared by before one is settled.
constexpr int kUsualSpeed = 5;

int LowZeros(const FrameSamples& samples, int most) {
    std::uint32_t seen = 0;
    for (const std::vector<std::int32_t>& channel : samples)
        for (const std::int32_t sample : channel) seen |= static_cast<std::uint32_t>(sample);
    return std::min(most, std::countr_zero(seen));
}

}  // namespace

GroupCoder::GroupCoder(const Configuration& configuration, const StreamFormat& format)
    : configuration_(configuration),
      format_(format),
      joint_(configuration, format),
      joint_before_(joint_) {
    const Cascade cascade(configuration.stages, format.Bits());
    for (int i = 0; i < format.Channels(); ++i)
        channels_.push_back({cascade, cascade, CascadeScratch(format.FrameSamples()), {}, {}, {}});
}

void GroupCoder::Begin(int zeros) {
    joint_.Restart();
    for (Channel& channel : channels_) {
        channel.cascade.Restart();
        channel.counters.clear();
        for (int speed = kSlowest; speed <= kFastest; ++speed) channel.counters.emplace_back(speed);
        channel.counts.assign(channel.counters.size(), 0);
    }
    bits_.assign(kFastest - kSlowest + 1, 0);
    possible_.assign(bits_.size(), true);
    speed_.reset();
    zeros_ = zeros;
    at_start_ = true;
    waiting_ = 0;
    written_ = 0;
}

void GroupCoder::Predict(const FrameSamples& samples, TaskTeam* team) {
    if (written_ == waiting_) waiting_ = written_ = 0;
    if (waiting_ == frames_.size()) frames_.emplace_back();
    Frame& frame = frames_[waiting_++];
    zeros_ = LowZeros(samples, zeros_);
    frame.zeros = zeros_;
    frame.first = at_start_;
    frame.raw = false;
    frame.tile.channels = samples;
    for (std::vector<std::int32_t>& channel : frame.tile.channels)
        for (std::int32_t& sample : channel) sample >>= zeros_;

    joint_before_ = joint_;
    const bool safe = joint_.Run(frame.tile);
    const auto predict = [&](int channel) { PredictChannel(channel, frame); };
    if (team != nullptr)
        team->Run(format_.Channels(), predict);
    else
        for (int channel = 0; channel < format_.Channels(); ++channel) predict(channel);
    if (!safe || IsBetterRaw(frame)) MakeRaw(samples, frame);
    at_start_ = false;
}

void GroupCoder::PredictChannel(int index, Frame& frame) {
    Channel& channel = channels_[Index(index)];
    std::ranges::fill(channel.counts, 0);
    channel.safe = true;
    channel.cascade_before = channel.cascade;
    channel.counters_before = channel.counters;
    if (!frame.tile.coded[Index(index)]) return;
    std::vector<std::int32_t>& values = frame.tile.channels[Index(index)];
    channel.safe = channel.cascade.Run(values, frame.first, channel.scratch);
    if (frame.first) channel.first_mean = FirstMean(values, format_.Bits());
    for (std::size_t i = 0; i < channel.counters.size(); ++i)
        channel.counts[i] = frame.first ? channel.counters[i].CountFirst(values, channel.first_mean)
                                        : channel.counters[i].Count(values);
}

// Also where its sums are not safe. Adds its bits up otherwise.
bool GroupCoder::IsBetterRaw(const Frame& frame) {
    const std::int64_t raw_bits =
        std::int64_t{format_.Channels()} * format_.FrameSamples() * (format_.Bits() - frame.zeros);
    std::vector<std::int64_t> bits(channels_[0].counts.size());
    for (const Channel& channel : channels_) {
        if (!channel.safe) return true;
        for (std::size_t i = 0; i < bits.size(); ++i) bits[i] += channel.counts[i];
    }
    if (bits[speed_ ? 0 : kUsualSpeed - kSlowest] > raw_bits) return true;
    for (std::size_t i = 0; i < bits.size(); ++i) {
        bits_[i] += bits[i];
        possible_[i] = possible_[i] && bits[i] <= raw_bits;
    }
    return false;
}

void GroupCoder::MakeRaw(const FrameSamples& samples, Frame& frame) {
    frame.raw = true;
    frame.tile.channels = samples;
    joint_ = joint_before_;
    for (Channel& channel : channels_) {
        channel.cascade = channel.cascade_before;
        channel.counters = channel.counters_before;
    }
    const std::int64_t bits =
        std::int64_t{format_.Channels()} * format_.FrameSamples() * (format_.Bits() - frame.zeros);
    for (std::int64_t& all : bits_) all += bits;
}

std::size_t GroupCoder::BestSpeed() const {
    std::size_t best = kUsualSpeed - kSlowest;
    for (std::size_t i = 0; i < bits_.size(); ++i)
        if (possible_[i] && bits_[i] < bits_[best]) best = i;
    return best;
}

void GroupCoder::Settle() {
    assert(!speed_ && written_ == 0);
    const std::size_t best = BestSpeed();
    speed_ = kSlowest + static_cast<int>(best);
    for (Channel& channel : channels_) {
        channel.counters = {channel.counters[best]};
        channel.counts.resize(1);
        channel.writer = ResidualCoder(*speed_);
    }
}

void GroupCoder::WriteTile(BitWriter& out) {
    assert(speed_ && written_ < waiting_);
    const Frame& frame = frames_[written_++];
    out.Put(frame.first ? 1 : 0, 1);
    if (frame.first) WriteConfiguration(configuration_, format_, *speed_, out);
    out.Put(frame.raw ? 1 : 0, 1);
    if (!frame.raw) {
        for (int i = 0; i < format_.Channels(); ++i) out.Put(frame.tile.coded[Index(i)] ? 1 : 0, 1);
        out.Put(0, 1);  // no linear prediction
    }
    out.Put(frame.zeros > 0 ? 1 : 0, 1);
    if (frame.zeros > 0) out.Put(static_cast<std::uint32_t>(frame.zeros), 5);
    if (!frame.raw) return WriteCoded(frame, out);
    for (const std::vector<std::int32_t>& channel : frame.tile.channels)
        for (const std::int32_t sample : channel)
            out.Put(static_cast<std::uint32_t>(sample >> frame.zeros),
                    format_.Bits() - frame.zeros);
}

void GroupCoder::WriteCoded(const Frame& frame, BitWriter& out) {
    for (int i = 0; i < format_.Channels(); ++i) {
        if (!frame.tile.coded[Index(i)]) continue;
        const std::vector<std::int32_t>& values = frame.tile.channels[Index(i)];
        Channel& channel = channels_[Index(i)];
        out.Put(0, 1);  // no transient
        if (frame.first)
            channel.writer.WriteFirst(values, channel.first_mean, format_.Bits(),
                                      format_.Bits() + (configuration_.difference ? 1 : 0), out);
        else
            channel.writer.Write(values, out);
    }
}

}  // namespace codecs::wma_lossless
