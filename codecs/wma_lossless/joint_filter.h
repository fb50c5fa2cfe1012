// What stands before the cascades and looks at all channels together.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "codecs/wma_lossless/configuration.h"

namespace codecs::wma_lossless {

/// The channels of a frame, and which of them have anything to be coded.
struct Tile {
    std::vector<std::vector<std::int32_t>> channels;
    std::array<bool, kMostChannels> coded = {};
};

/// A copy filters on from where its original is.
class JointFilter {
  public:
    JointFilter(const Configuration& configuration, const StreamFormat& format);

    /// Forgets all.
    void Restart();
    /// Makes of a tile's samples what is left over, and finds out which channels are coded.
    /// False when a sum has wrapped: a decoder with wider ones would differ.
    bool Run(Tile& tile);

  private:
    void TakeTap(Tile& tile);
    bool Predict(Tile& tile);
    template <int kChannels, int kOrder>
    bool PredictAs(Tile& tile);

    bool tap_;
    bool difference_;
    FilterShape shape_;
    int channels_;
    std::int32_t most_;
    std::array<std::int32_t, kMostChannels> last_ = {};
    // Of the prediction from all channels. The weights of one channel after those of another.
    std::vector<std::int16_t> weights_;
    std::vector<std::int16_t> same_time_weights_;
    std::vector<std::int32_t> history_;  // newest first, the channels of one time together
    std::vector<std::int16_t> signs_;    // of those
    // Both, with a tile's own.
    std::vector<std::int32_t> laid_out_;
    std::vector<std::int16_t> laid_out_signs_;
};

}  // namespace codecs::wma_lossless
