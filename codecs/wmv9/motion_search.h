// Finds the vectors that predict a block best for their bits.
#pragma once

#include <cstdint>
#include <span>

#include "codecs/wmv9/estimates.h"
#include "codecs/wmv9/motion_vectors.h"
#include "codecs/wmv9/preset.h"
#include "codecs/wmv9/quantiser.h"

namespace codecs::wmv9 {

/// A square block of luma.
struct SearchBlock {
    int left = 0;  // in the picture
    int top = 0;
    int size = 16;  // or 8
};

struct FoundVector {
    MotionVector vector;
    std::uint32_t difference = 0;  // by the measure of the last step
    std::uint32_t cost = 0;        // with the vector's bits
};

/// In one reference. Vectors are within the block's window.
class MotionSearch {
  public:
    MotionSearch(const Picture& picture, const Frame& reference, const Estimates& estimates,
                 const Quantiser& quantiser, const Preset& preset)
        : picture_(picture),
          reference_(reference),
          estimates_(estimates),
          quantiser_(quantiser),
          preset_(preset) {}

    /// @param predictor  that the vector's difference is counted from
    /// @param starts     vectors worth a look
    FoundVector Search(const SearchBlock& block, MotionVector predictor,
                       std::span<const MotionVector> starts) const;

  private:
    struct State;
    void Whole(State& state, std::span<const MotionVector> starts) const;
    void Fractions(State& state, int step) const;
    bool TryFour(State& state, const MotionVector (&around)[4]) const;
    void TryWhole(State& state, MotionVector vector) const;
    bool TryFraction(State& state, MotionVector vector) const;
    std::uint32_t BitCost(const State& state, MotionVector vector) const;
    std::uint32_t Measure(const State& state, MotionVector vector) const;

    const Picture& picture_;
    const Frame& reference_;
    const Estimates& estimates_;
    const Quantiser& quantiser_;
    const Preset& preset_;
};

}  // namespace codecs::wmv9
