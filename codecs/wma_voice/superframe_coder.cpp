#include "codecs/wma_voice/superframe_coder.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "codecs/common/index.h"

namespace codecs::wma_voice {
namespace {

constexpr int kWindowCentre = 130;  // of the spectrum that stands for a frame's end, in samples
constexpr int kLengthBits = 12;
constexpr int kFillerCountBits = 4;
constexpr int kFillerUnit = 10;
constexpr int kMostFillers = 16;

// Errors are not heard so far below what is loud lately, and not minded so far below the frame
// itself. Tuned for STOI on prompts of asterisk-core-sounds-en at 4, 8 and 16 kbit/s.
constexpr float kInaudible = 2e-4F;
constexpr float kEnough = 0.02F;
// What noise is taken for better than its error says: hisses may as well be others, but not in
// music. Tuned for signal to noise on asterisk-moh-opsound at 8 and 16 kbit/s.
constexpr double kNoiseBonusDb = 0.5;
constexpr double kMixedNoiseBonusDb = -3;
constexpr int kFewBits = 130;            // of a frame
constexpr float kLoudnessFall = 0.998F;  // a frame
constexpr float kLeastLoudness = 160 * 1e-6F;

}  // namespace

SuperframeCoder::SuperframeCoder(const StreamFormat& format)
    : format_(format),
      analysis_(format),
      quantiser_(format),
      frames_(format),
      spectrum_(FirstSpectrum(format.Order())),
      few_bits_(format.SuperframeBits() < kFewBits * kFramesTogether) {
    const int half = analysis_.WindowSamples() / 2;
    before_ = std::max(half - kWindowCentre, 0);
    behind_ = std::max(kWindowCentre + half - kFrameSamples, 0);
}

int SuperframeCoder::FixedBits(int length) const {
    // Speech, whether a length follows, whether a filler does.
    return 3 + (length < kSuperframeSamples ? kLengthBits : 0) + quantiser_.Bits();
}

void SuperframeCoder::Code(std::span<const float> samples, int length, const Allowance& allowance,
                           int fill, BitWriter& bits) {
    bits.Clear();
    bits.Put(1, 1);
    bits.Put(length < kSuperframeSamples ? 1 : 0, 1);
    if (length < kSuperframeSamples) bits.Put(static_cast<std::uint32_t>(length), kLengthBits);
    Spectra spectra{};
    const int half = analysis_.WindowSamples() / 2;
    for (int f = 0; f < kFramesTogether; ++f)
        spectra[Index(f)] = analysis_.Analyse(samples.subspan(
            Index(before_ + f * kFrameSamples + kWindowCentre - half), Index(2 * half)));
    const Spectra quantised = quantiser_.Quantise(spectra, bits);

    const int least_frame = format_.NoiseBits(kSilenceType);
    int left = allowance.most_bits - FixedBits(length);
    for (int f = 0; f < kFramesTogether; ++f) {
        FrameInput input;
        input.before = spectrum_;
        input.spectrum = quantised[Index(f)];
        input.samples = samples.subspan(Index(before_ + f * kFrameSamples), Index(kFrameSamples));
        input.number = frame_++;
        input.mixed = allowance.mixed;
        const int later = (kFramesTogether - 1 - f) * least_frame;
        const CodedFrame frame =
            CodeFrame(input, {allowance.db_per_bit, left - later, allowance.mixed});
        frames_.Write(frame, bits);
        left -= frame.bits;
        state_ = frame.state;
        state_.decoder.NextFrame();
        std::copy(frame.decoded.begin(), frame.decoded.end(),
                  decoded_.begin() + std::ptrdiff_t{f} * kFrameSamples);
        spectrum_ = input.spectrum;
    }
    const int missing = fill - static_cast<int>(bits.Size()) - 1 - kFillerCountBits;
    const int units = std::clamp(missing / kFillerUnit, 0, kMostFillers);
    bits.Put(units > 0 ? 1 : 0, 1);
    if (units == 0) return;
    bits.Put(static_cast<std::uint32_t>(units - 1), kFillerCountBits);
    for (int k = 0; k < units; ++k) bits.Put(0, kFillerUnit);
}

CodedFrame SuperframeCoder::CodeFrame(const FrameInput& input, const Allowance& allowance) {
    frames_.Begin(input, state_);
    const float power = frames_.HeardPower();
    loudness_ = std::max({loudness_ * kLoudnessFall, power, kLeastLoudness});
    const float inaudible = kInaudible * loudness_ + kEnough * power;
    const double noise_bonus = allowance.mixed ? kMixedNoiseBonusDb : kNoiseBonusDb;
    const auto cost = [&](const CodedFrame& frame) {
        const bool noise = frame.type == kSilenceType || frame.type == kNoiseType;
        return 10 * std::log10(static_cast<double>(frame.error + inaudible)) +
               allowance.db_per_bit * frame.bits - (noise ? noise_bonus : 0);
    };
    CodedFrame best = frames_.Silence();
    double least = cost(best);
    const auto consider = [&](const CodedFrame& frame) {
        const double its_cost = cost(frame);
        if (its_cost >= least) return;
        least = its_cost;
        best = frame;
    };
    if (format_.NoiseBits(kNoiseType) <= allowance.most_bits) consider(frames_.Noise());

    for (const PulseType& type : kPulseTypes) {
        if (!(few_bits_ ? type.of_few_bits : type.of_many_bits)) continue;
        const int bits = format_.Bits(type);
        // Whatever it leaves of the error.
        const double least_cost =
            10 * std::log10(static_cast<double>(inaudible)) + allowance.db_per_bit * bits;
        if (bits <= allowance.most_bits && least_cost < least) consider(frames_.WithPulses(type));
    }
    return best;
}

BitWriter SuperframeCoder::Dummy() const {
    BitWriter bits;
    bits.Put(1, 1);
    bits.Put(1, 1);
    bits.Put(0, kLengthBits);
    for (int k = 0; k < quantiser_.Bits(); ++k) bits.Put(0, 1);
    for (int f = 0; f < kFramesTogether; ++f) frames_.Write(CodedFrame{}, bits);
    bits.Put(1, 1);
    bits.Put(kMostFillers - 1, kFillerCountBits);
    for (int k = 0; k < kMostFillers; ++k) bits.Put(0, kFillerUnit);
    return bits;
}

}  // namespace codecs::wma_voice
