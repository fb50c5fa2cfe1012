// Codes macroblocks by themselves (SMPTE ST 421, 8.1 and 8.3.6).
#pragma once

#include <cstdint>

#include "codecs/wmv9/candidate.h"
#include "codecs/wmv9/estimates.h"
#include "codecs/wmv9/quantiser.h"
#include "codecs/wmv9/scan.h"

namespace codecs::wmv9 {

/// Whether levels are predicted from the blocks around.
enum class AcPrediction : std::uint8_t { Off, On, Choose };

struct IntraOptions {
    AcPrediction prediction = AcPrediction::Choose;
    bool rd = false;  // levels by bits and error
    /// What costs as much or more, error + lambda * bits, is given up.
    std::int64_t limit = kNoLimit;
};

/// `candidate` is overwritten; its bits are those of blocks, pattern and prediction flag. Returns
/// false, with no samples, where it is given up.
bool CodeIntra(const Picture& picture, const Estimates& estimates, const Quantiser& quantiser,
               const IntraOptions& options, int x, int y, Candidate& candidate);

/// The order in which the AC levels of an intra block are written.
const Scan& IntraScan(bool i_picture, const Macroblock& macroblock, int block);

/// The pattern of coded blocks of an I picture's macroblock at (x, y), as it is written.
int WrittenIPattern(const MacroblockGrid& grid, const Macroblock& macroblock, int x, int y);

}  // namespace codecs::wmv9
