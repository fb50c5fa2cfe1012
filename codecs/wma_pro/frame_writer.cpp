#include "codecs/wma_pro/frame_writer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "codecs/common/index.h"
#include "codecs/wma/floor_log2.h"
#include "codecs/wma/packetiser.h"
#include "codecs/wma_pro/scale_factors.h"

namespace codecs::wma_pro {
namespace {

bool AnyTransmitted(const Block& block) {
    return std::ranges::any_of(block.channels, &BlockChannel::transmitted);
}

void PutFill(int fill_bits, BitWriter& writer) {
    writer.Put(fill_bits > 0 ? 1 : 0, 1);
    if (fill_bits == 0) return;
    // Two bits that are zero, the width of the count, the count less 1, and so many bits.
    int width = 0;
    while (fill_bits - 6 - width > 1 << width) ++width;
    int left = fill_bits - 6 - width;
    writer.Put(0, 2);
    writer.Put(static_cast<std::uint32_t>(width), 4);
    writer.Put(static_cast<std::uint32_t>(left - 1), width);
    for (; left > 0; left -= 32) writer.Put(0, std::min(left, 32));
}

// The step beside the usual one: six bits, and behind the ends of their range groups of five.
void PutStep(int difference, BitWriter& writer) {
    constexpr int kLeast = -32;
    constexpr int kMost = 31;
    constexpr int kGroupMost = 31;
    writer.Put(static_cast<std::uint32_t>(std::clamp(difference, kLeast, kMost)), 6);
    int rest = difference >= kMost ? difference - kMost : kLeast - difference;
    if (rest < 0) return;
    for (; rest >= kGroupMost; rest -= kGroupMost) writer.Put(kGroupMost, 5);
    writer.Put(static_cast<std::uint32_t>(rest), 5);
}

}  // namespace

FrameWriter::FrameWriter(const StreamFormat& format, int scale_step_db)
    : format_(format), scale_step_db_(scale_step_db) {
    for (const BlockFormat& sizes : format.blocks) codes_.emplace_back(sizes.size);
}

int FrameWriter::Bits(const Frame& frame) {
    scratch_.Clear();
    WriteHead(frame, {}, scratch_);
    int coefficients = 0;
    for (const Block& block : frame.blocks) {
        WriteBlockHead(block, &block == &frame.blocks.front(), 0, scratch_);
        for (const BlockChannel& channel : block.channels)
            if (channel.transmitted) coefficients += channel.plan.bits;
    }
    constexpr int kEndBits = 2;
    return wma::FrameLengthBits(format_.packet_bytes) + static_cast<int>(scratch_.Size()) +
           coefficients + kEndBits;
}

void FrameWriter::Write(const Frame& frame, const FrameExtras& extras, BitWriter& writer) const {
    WriteHead(frame, extras, writer);
    int fill_bits = extras.fill_bits;
    for (const Block& block : frame.blocks) {
        WriteBlockHead(block, &block == &frame.blocks.front(), fill_bits, writer);
        fill_bits = 0;
        for (const BlockChannel& channel : block.channels)
            if (channel.transmitted)
                codes_[Index(block.size_index)].Write(channel.levels, channel.plan, writer);
    }
    writer.Put(1, 1);
}

void FrameWriter::WriteHead(const Frame& frame, const FrameExtras& extras,
                            BitWriter& writer) const {
    WriteLayout(frame, writer);
    if (format_.channels > 1) writer.Put(0, 1);  // nothing is done to what has been decoded
    writer.Put(0, 8);                            // dynamic range
    if (extras.trimmed > 0) {
        writer.Put(0b101, 3);  // at the end only
        writer.Put(static_cast<std::uint32_t>(extras.trimmed), format_.TrimBits());
    } else {
        writer.Put(0, 1);
    }
}

void FrameWriter::WriteLayout(const Frame& frame, BitWriter& writer) const {
    const int halvings = static_cast<int>(format_.blocks.size()) - 1;
    const int size_bits = wma::FloorLog2(halvings) + 1;
    const bool whole_is_short = halvings == 2 || halvings == 4;
    writer.Put(1, 1);  // all channels share it
    int begin = 0;
    for (const Block& block : frame.blocks) {
        const int smallest = format_.blocks.back().size;
        const auto index = static_cast<std::uint32_t>(block.size_index);
        if (begin < format_.frame_samples - smallest) {
            if (!whole_is_short) {
                writer.Put(index, size_bits);
            } else if (index == 0) {
                writer.Put(0, 1);
            } else {
                writer.Put(1, 1);
                writer.Put(index - 1, size_bits - 1);
            }
        }
        begin += format_.blocks[Index(block.size_index)].size;
    }
}

void FrameWriter::WriteBlockHead(const Block& block, bool first, int fill_bits,
                                 BitWriter& writer) const {
    PutFill(fill_bits, writer);
    writer.Put(0, 1);
    if (format_.channels > 1) WriteGroups(block, writer);
    for (const BlockChannel& channel : block.channels) writer.Put(channel.transmitted ? 1 : 0, 1);
    if (!AnyTransmitted(block)) return;
    writer.Put(1, 1);  // counts of what goes four at a time follow
    for (const BlockChannel& channel : block.channels)
        writer.Put(static_cast<std::uint32_t>(channel.transmitted ? channel.plan.vector / 4 : 0),
                   codes_[Index(block.size_index)].CountBits());
    WriteSteps(block, writer);
    WriteScaleFactors(block, first, writer);
}

// Pairs first, then each other channel by itself. The last two channels need not be named.
void FrameWriter::WriteGroups(const Block& block, BitWriter& writer) const {
    writer.Put(0, 1);
    std::vector<bool> left(block.channels.size(), true);
    const auto name_group = [&](std::span<const int> channels) {
        if (std::ranges::count(left, true) > 2)
            for (std::size_t c = 0; c < left.size(); ++c)
                if (left[c])
                    writer.Put(std::ranges::count(channels, static_cast<int>(c)) > 0 ? 1 : 0, 1);
        for (const int channel : channels) left[Index(channel)] = false;
    };
    constexpr std::uint32_t kApart = 0b10;
    for (std::size_t i = 0; i < block.pairs.size(); ++i) {
        const BlockPair& pair = block.pairs[i];
        name_group(format_.pairs[i]);
        if (!pair.mixes) {
            writer.Put(kApart, 2);
            continue;
        }
        writer.Put(0, 1);
        const bool all = std::ranges::count(pair.mixed, false) == 0;
        writer.Put(all ? 1 : 0, 1);
        if (all) continue;
        for (const bool mixed : pair.mixed) writer.Put(mixed ? 1 : 0, 1);
    }
    while (std::ranges::count(left, true) > 2) {
        const int channel[] = {static_cast<int>(std::ranges::find(left, true) - left.begin())};
        name_group(channel);
    }
    if (std::ranges::count(left, true) == 2) writer.Put(kApart, 2);
}

void FrameWriter::WriteSteps(const Block& block, BitWriter& writer) const {
    const int least = std::ranges::min(block.channels, {}, &BlockChannel::step_db).step_db;
    const int most = std::ranges::max(block.channels, {}, &BlockChannel::step_db).step_db;
    PutStep(least - format_.UsualStepDb(), writer);
    if (block.channels.size() == 1) return;
    const int width = most - least > 1 ? wma::FloorLog2(most - least - 1) + 1 : 0;
    writer.Put(static_cast<std::uint32_t>(width), 3);
    for (const BlockChannel& channel : block.channels) {
        const int above = channel.step_db - least;
        writer.Put(above > 0 ? 1 : 0, 1);
        if (above > 0) writer.Put(static_cast<std::uint32_t>(above - 1), width);
    }
}

void FrameWriter::WriteScaleFactors(const Block& block, bool first, BitWriter& writer) const {
    for (const BlockChannel& channel : block.channels) {
        if (!first) writer.Put(channel.form == ScaleFactorForm::Reused ? 0 : 1, 1);
        if (channel.form == ScaleFactorForm::Whole)
            WriteWholeFactors(channel.scale_factors, scale_step_db_, writer);
        else if (channel.form == ScaleFactorForm::Changed)
            WriteFactorChanges(channel.known_factors, channel.scale_factors, writer);
    }
}

}  // namespace codecs::wma_pro
