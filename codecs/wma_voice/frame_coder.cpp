#include "codecs/wma_voice/frame_coder.h"

#include <algorithm>
#include <bit>
#include <cstddef>

#include "codecs/common/index.h"

namespace codecs::wma_voice {
namespace {

constexpr int kNoisePlaces = 256;
constexpr int kNoisePlaceBits = 8;
constexpr int kNoiseGainBits = 6;
constexpr int kSilenceGainBits = 8;
constexpr int kPulseGainBits = 7;
constexpr int kNoiseBlocks = 2;

const PulseType& TypeOf(int number) {
    return *std::ranges::find(kPulseTypes, number, &PulseType::number);
}

// Two pulses of a track have one sign: they stand in falling order where theirs are the same, in
// rising order where the second has the other.
void PutTrack(const TrackPulses& pulses, bool doubled, int place_bits, BitWriter& bits) {
    int first = pulses.first;
    int second = pulses.second;
    bool plus = pulses.first_plus;
    if (doubled && (first >= second) != (pulses.first_plus == pulses.second_plus)) {
        std::swap(first, second);
        plus = pulses.second_plus;
    }
    bits.Put(plus ? 1 : 0, 1);
    bits.Put(static_cast<std::uint32_t>(first), place_bits);
    if (doubled) bits.Put(static_cast<std::uint32_t>(second), place_bits);
}

}  // namespace

FrameCoder::FrameCoder(const StreamFormat& format) : format_(format), coder_(format) {}

void FrameCoder::Begin(const FrameInput& input, const CoderState& state) {
    input_ = input;
    state_ = state;
    for (Blocks& blocks : blocks_) {
        blocks.filters.clear();
        blocks.first_pitch.reset();
    }
}

FrameCoder::Blocks& FrameCoder::Cut(int blocks) {
    Blocks& cut = blocks_[std::bit_width(static_cast<unsigned>(blocks)) - 1U];
    if (!cut.filters.empty()) return cut;
    const std::size_t samples = Index(kFrameSamples / blocks);
    cut.filters.reserve(Index(blocks));
    for (int b = 0; b < blocks; ++b)
        cut.filters.emplace_back(
            BlockPrediction(input_.before, input_.spectrum, format_.Order(), b, blocks),
            input_.samples.subspan(Index(b) * samples, samples), input_.mixed);
    return cut;
}

CodedFrame FrameCoder::Silence() {
    CodedFrame frame;
    frame.type = kSilenceType;
    frame.bits = format_.NoiseBits(kSilenceType);
    frame.state = state_;
    const BlockFilter& filter = Cut(1).filters.front();
    frame.noises[0] =
        coder_.ChooseNoise(filter, state_, kSilenceGains, SilentNoisePlace(input_.number), 1);
    frame.error = frame.noises[0].error;
    coder_.ApplyNoise(filter, frame.noises[0], kSilenceGains, 0, frame.state, frame.decoded);
    return frame;
}

CodedFrame FrameCoder::Noise() {
    CodedFrame frame;
    frame.type = kNoiseType;
    frame.bits = format_.NoiseBits(kNoiseType);
    frame.state = state_;
    const std::vector<BlockFilter>& filters = Cut(kNoiseBlocks).filters;
    for (int b = 0; b < kNoiseBlocks; ++b) {
        const BlockFilter& filter = filters[Index(b)];
        const int at = b * filter.Samples();
        NoiseChoice& choice = frame.noises[Index(b)];
        choice = coder_.ChooseNoise(filter, frame.state, kNoiseGains, 0, kNoisePlaces);
        frame.error += choice.error;
        coder_.ApplyNoise(filter, choice, kNoiseGains, at, frame.state,
                          std::span(frame.decoded).subspan(Index(at), Index(filter.Samples())));
    }
    return frame;
}

PitchSpan FrameCoder::Span(const CodedFrame& frame, int block) const {
    if (block == 0) return {0, format_.PitchCount()};
    const int centre = format_.Centre(frame.blocks[Index(block - 1)].pitch);
    return {centre - format_.PitchReach(), centre + format_.PitchReach()};
}

CodedFrame FrameCoder::WithPulses(const PulseType& type) {
    CodedFrame frame;
    frame.type = type.number;
    frame.bits = format_.Bits(type);
    frame.state = state_;
    Blocks& cut = Cut(type.blocks);
    for (int b = 0; b < type.blocks; ++b) {
        const BlockFilter& filter = cut.filters[Index(b)];
        const int at = b * filter.Samples();
        BlockChoice& choice = frame.blocks[Index(b)];
        PitchSpan pitches = Span(frame, b);
        if (b == 0 && cut.first_pitch) pitches = {*cut.first_pitch, *cut.first_pitch + 1};
        choice = coder_.Choose(filter, frame.state, at, type, pitches);
        if (b == 0) cut.first_pitch = choice.pitch;
        frame.error += choice.error;
        coder_.Apply(filter, choice, type, at, frame.state,
                     std::span(frame.decoded).subspan(Index(at), Index(filter.Samples())));
    }
    return frame;
}

float FrameCoder::HeardPower() {
    CoderState rest;
    std::array<float, kFrameSamples> heard;
    Cut(1).filters.front().Target(rest, heard);
    float power = 0;
    for (const float value : heard) power += value * value;
    return power;
}

void FrameCoder::Write(const CodedFrame& frame, BitWriter& bits) const {
    bits.Put(format_.TypeCode(frame.type));
    if (frame.type == kSilenceType) {
        bits.Put(static_cast<std::uint32_t>(frame.noises[0].gain), kSilenceGainBits);
        return;
    }
    if (frame.type == kNoiseType) {
        for (const NoiseChoice& noise : frame.noises) {
            bits.Put(static_cast<std::uint32_t>(noise.place), kNoisePlaceBits);
            bits.Put(static_cast<std::uint32_t>(noise.gain), kNoiseGainBits);
        }
        return;
    }
    const PulseType& type = TypeOf(frame.type);
    for (int b = 0; b < type.blocks; ++b) {
        const BlockChoice& block = frame.blocks[Index(b)];
        if (b == 0)
            bits.Put(static_cast<std::uint32_t>(block.pitch), format_.PitchBits());
        else
            bits.Put(static_cast<std::uint32_t>(block.pitch - Span(frame, b).first),
                     format_.PitchDeltaBits());
        for (int track = 0; track < kTracks; ++track)
            PutTrack(block.pulses[Index(track)], track < type.doubled, type.PlaceBits(), bits);
        bits.Put(static_cast<std::uint32_t>(block.gain), kPulseGainBits);
    }
}

}  // namespace codecs::wma_voice
