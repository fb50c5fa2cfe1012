// Quantises frames.
#pragma once

#include <vector>

#include "codecs/common/task_team.h"
#include "codecs/wma_pro/frame.h"
#include "codecs/wma_pro/frame_writer.h"
#include "codecs/wma_pro/stream_format.h"

namespace codecs::wma_pro {

/// The format and the team outlive it. One thread.
class FrameCoder {
  public:
    /// @param scale_step_db  of a scale factor
    /// @param team           works on channels side by side, which changes no output
    FrameCoder(const StreamFormat& format, int scale_step_db, TaskTeam& team);

    /// Chooses which bands of pairs are coded as sum and difference, for steps about `offset_db`
    /// above the wanted ones.
    void ChooseMixing(Frame& frame, double offset_db) const;
    /// Codes all blocks with steps that lie `offset_db` above the wanted ones; how many bits
    /// FrameWriter makes of them.
    int Code(Frame& frame, double offset_db);

    const FrameWriter& Writer() const { return writer_; }

  private:
    // What later blocks of a frame refer to; none without factors.
    struct Sent {
        std::vector<int> factors;
        int size_index = 0;
    };

    double StepShift(const Block& block) const;
    float StepsFor(int step_db, const Block& block) const;
    void MixPair(Block& block, std::size_t pair, double offset_db) const;
    void CodeBlock(Block& block, double offset_db, std::vector<Sent>& sent);
    void ChooseFactors(Block& block, int channel, double offset_db, const Sent& sent) const;
    void Quantise(Block& block, int channel) const;
    void QuantisePair(Block& block, std::size_t pair) const;
    void FreeFactors(Block& block, int channel) const;

    const StreamFormat& format_;
    int scale_step_db_;
    TaskTeam& team_;
    FrameWriter writer_;
    std::vector<std::vector<CoefficientCodes>> codes_;  // by channel and size of blocks
};

}  // namespace codecs::wma_pro
