// Codes a group of frames, which are decoded without any before them, with one configuration.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "codecs/common/bit_writer.h"
#include "codecs/common/task_team.h"
#include "codecs/wma_lossless/cascade.h"
#include "codecs/wma_lossless/joint_filter.h"
#include "codecs/wma_lossless/residual_coder.h"

namespace codecs::wma_lossless {

/// Samples by channels.
using FrameSamples = std::vector<std::vector<std::int32_t>>;

class GroupCoder {
  public:
    GroupCoder(const Configuration& configuration, const StreamFormat& format);

    /// @param zeros  how many of the samples' lowest bits are 0 throughout
    void Begin(int zeros);
    /// Predicts the group's next frame, which waits to be written.
    /// @param team  does the channels side by side; null = one after the other
    void Predict(const FrameSamples& samples, TaskTeam* team);
    /// Whether the frame predicted last is written uncompressed.
    bool LastIsRaw() const { return frames_[waiting_ - 1].raw; }
    /// Of the frames so far, before the group is settled.
    std::int64_t Bits() const { return bits_[BestSpeed()]; }
    /// Chooses how fast the lengths of codes adapt by the frames so far, before any of them is
    /// written.
    void Settle();
    /// Writes the frame that has waited longest, as its tile stands in the stream.
    void WriteTile(BitWriter& out);

  private:
    static constexpr int kSlowest = 3;  // of the speeds that are tried
    static constexpr int kFastest = 7;

    struct Channel {
        Cascade cascade;
        Cascade cascade_before;  // the last frame
        CascadeScratch scratch;
        std::vector<ResidualCoder> counters;  // by speed
        std::vector<ResidualCoder> counters_before;
        std::vector<std::int64_t> counts;
        std::uint32_t first_mean = 0;
        ResidualCoder writer{0};
        bool safe = true;
    };
    struct Frame {
        Tile tile;
        int zeros = 0;
        bool first = false;
        bool raw = false;
    };

    std::size_t BestSpeed() const;  // less the slowest one
    void PredictChannel(int channel, Frame& frame);
    bool IsBetterRaw(const Frame& frame);
    void MakeRaw(const FrameSamples& samples, Frame& frame);
    void WriteCoded(const Frame& frame, BitWriter& out);

    const Configuration& configuration_;
    StreamFormat format_;
    JointFilter joint_;
    JointFilter joint_before_;
    std::vector<Channel> channels_;
    std::vector<Frame> frames_;  // that wait, and places for more
    std::size_t waiting_ = 0;
    std::size_t written_ = 0;  // of those that wait
    int zeros_ = 0;
    bool at_start_ = true;
    std::optional<int> speed_;        // once it is settled
    std::vector<std::int64_t> bits_;  // by speed
    std::vector<bool> possible_;      // no frame is too large
};

}  // namespace codecs::wma_lossless
