// A block of a frame and the filters through which its excitation is heard.
#pragma once

#include <array>
#include <span>

#include "codecs/wma_voice/pulse_search.h"
#include "codecs/wma_voice/synthesis.h"

namespace codecs::wma_voice {

/// What an encoder carries on from block to block.
struct CoderState {
    DecoderState decoder;
    // The last of what is wrong, and of the same as it is heard.
    std::array<float, kMostOrder> errors{}, heard_errors{};
};

/// A block, or a silent frame, and the filters that it passes, whatever came before it. Errors are
/// heard through A(z / w) / A(z / 0.6), which lets noise follow the spectrum: w is 0.97, in music
/// 0.94.
class BlockFilter {
  public:
    /// @param samples  outlive it
    /// @param mixed    music may be among them
    BlockFilter(const Prediction& prediction, std::span<const float> samples, bool mixed);

    int Samples() const { return static_cast<int>(samples_.size()); }
    std::span<const float> Response() const {
        return std::span(response_).subspan(kLanes - 1, samples_.size());
    }
    const PulseCorrelations& Correlations() const { return correlations_; }

    /// What excitations have to add to what the past leaves, as it is heard.
    void Target(const CoderState& state, std::span<float> target) const;
    /// Through prediction and hearing, from rest.
    void Filter(std::span<const float> excitation, std::span<float> to) const;
    /// Correlation of `heard` with a pulse at each sample.
    void Correlate(std::span<const float> heard, std::span<float> to) const;
    /// The block's excitation stands at `at` in the frame: goes on behind it.
    /// @param decoded  what a decoder gives
    void Advance(CoderState& state, int at, std::span<float> decoded) const;

  private:
    static constexpr std::size_t kLanes = 4;  // samples of an excitation that are filtered together
    using Signal = std::array<float, kMostOrder + kFrameSamples>;  // behind what came before

    std::span<float> Whole(Signal& signal) const;  // as far as the block goes
    /// Errors become what is heard of them.
    void Hear(const Signal& errors, Signal& heard) const;

    Weights prediction_;
    Weights numerator_, denominator_;  // of what is heard
    std::span<const float> samples_;
    std::array<float, kLanes - 1 + kFrameSamples> response_{};  // behind zeros
    std::array<float, kFrameSamples> reversed_{};  // the response, to the block's length
    PulseCorrelations correlations_;
};

}  // namespace codecs::wma_voice
