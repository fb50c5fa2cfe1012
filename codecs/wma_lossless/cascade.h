// The adaptive filters of one channel, one after the other.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "codecs/wma_lossless/configuration.h"

namespace codecs::wma_lossless {

/// Memory that cascades need while they run: one a thread.
class CascadeScratch {
  public:
    explicit CascadeScratch(int most_samples);

  private:
    friend class Cascade;
    // Newest first, with room for a block on each side.
    std::vector<std::int16_t> signs_;
    std::vector<std::int16_t> narrow_;
    std::vector<std::int32_t> wide_;
    std::vector<std::int32_t> narrow_moved_;
    std::vector<std::int64_t> wide_moved_;
};

/// A copy predicts on from where its original is; copying into one of the same configuration
/// allocates nothing.
class Cascade {
  public:
    Cascade(const std::vector<FilterShape>& stages, int bits_per_sample);

    /// Forgets all.
    void Restart();
    /// Makes of a tile's values what is left over.
    /// @param fast  as the tile is where the filters start afresh
    /// False when a decoder with wider sums than 32 bits could differ.
    bool Run(std::span<std::int32_t> values, bool fast, CascadeScratch& scratch);

  private:
    struct Stage {
        FilterShape shape;
        std::vector<std::int16_t> weights;
        std::vector<std::int32_t> history;  // newest first
    };

    bool RunStage(Stage& stage, std::span<std::int32_t> values, bool fast,
                  CascadeScratch& scratch) const;

    std::vector<Stage> stages_;
    std::int32_t most_;  // of a value that is predicted from
};

}  // namespace codecs::wma_lossless
