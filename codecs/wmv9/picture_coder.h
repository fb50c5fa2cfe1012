// Codes a picture from its samples to its bits.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "codecs/common/bit_writer.h"
#include "codecs/common/task_team.h"
#include "codecs/common/wavefront.h"
#include "codecs/wmv9/loop_filter.h"
#include "codecs/wmv9/mode_decision.h"
#include "codecs/wmv9/overlap.h"
#include "codecs/wmv9/picture_writer.h"
#include "codecs/wmv9/row_output.h"

namespace codecs::wmv9 {

/// Keeps what pictures of one size need; in macroblocks.
class PictureCoder {
  public:
    PictureCoder(int width, int height, TaskTeam& team);

    /// Decides, transforms, reconstructs and filters all macroblocks. Rows that are not decided
    /// keep the samples that the result had. Nothing of a B picture is filtered.
    void Analyse(Picture& picture, const ModeDecision& mode_decision);
    /// After Analyse of a B picture, to which nothing refers: what the loop filter leaves of the
    /// result.
    void FilterB(const Picture& picture);
    /// After Analyse.
    TableCounts Counts() const;
    const PicturePlanes& Planes() const { return planes_; }
    /// After Analyse, with the tables of the header chosen. Returns the bits of levels.
    std::size_t Write(const Picture& picture);
    const BitWriter& Bits() const { return out_; }

  private:
    void Commit(Picture& picture, const Candidate& candidate, int x, int y);
    // Leaves rows that are not decided, and finds those that are left to analyse.
    void Divide(Picture& picture, const ModeDecision& mode_decision);
    void Leave(Picture& picture, int y);
    // What is left to do when all macroblocks of a row are there.
    void FinishRow(const Picture& picture, int y);

    std::vector<RowOutput> rows_;
    PicturePlanes planes_;
    LoopFilter filter_;
    Overlap overlap_;
    TaskTeam& team_;
    Wavefront wavefront_;
    std::vector<Wavefront::Rows> ranges_;  // that are decided, and those below that they change
    std::vector<std::uint8_t> decided_;    // rows
    std::vector<WrittenRows> parts_;
    BitWriter out_;
};

}  // namespace codecs::wmv9
