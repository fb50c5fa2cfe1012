// Codes a picture from its samples to its bits.
#pragma once

#include <cstddef>
#include <vector>

#include "codecs/common/bit_writer.h"
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
    PictureCoder(int width, int height, int threads);

    /// Decides, transforms and reconstructs all macroblocks. Of a B picture, rows that are not
    /// decided keep the samples that the result had.
    void Analyse(Picture& picture, const ModeDecision& mode_decision);
    /// After Analyse: what the loop filter leaves of the result.
    void Filter(const Picture& picture);
    /// After Analyse.
    TableCounts Counts() const;
    const PicturePlanes& Planes() const { return planes_; }
    /// After Analyse, with the tables of the header chosen. Returns the bits of levels.
    std::size_t Write(const Picture& picture);
    const BitWriter& Bits() const { return out_; }

  private:
    void Commit(Picture& picture, const Candidate& candidate, int x, int y);
    // A row that is not decided.
    static void Leave(Picture& picture, int y);

    std::vector<RowOutput> rows_;
    PicturePlanes planes_;
    LoopFilter filter_;
    Overlap overlap_;
    Wavefront wavefront_;
    BitWriter out_;
};

}  // namespace codecs::wmv9
