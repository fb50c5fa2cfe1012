// How much an encoder tries at each level of performance.
#pragma once

#include "codecs/wmv9/residual.h"

namespace codecs::wmv9 {

struct Preset {
    int up_to = 0;          // level, 0 to 100
    bool quarter = true;    // vectors in quarters of a sample, else in halves
    bool hadamard = false;  // fractions of a sample are judged by transformed differences
    int rounds = 0;         // of the search by whole samples
    bool hexagon = false;   // it takes longer steps first
    bool square = false;    // eight fractions around, not four
    int fraction_rounds = 1;
    bool four_mv = false;          // 4MV: a vector for each block of luma
    bool intra_candidate = false;  // coded by itself wherever that may be cheaper
    bool rd = false;               // levels by bits and error
    bool rd_intra = false;
    unsigned shapes = 1;  // of transforms, see ShapeBit
    int try_from_bits = 0;
    /// A skipped macroblock is not looked at further where its error is worth no more bits.
    int skip_bits = 0;
    bool overlap = false;      // coarse blocks are smoothed where they meet
    int lookahead = 0;         // pictures beyond the one that is coded
    int lookahead_rounds = 0;  // of its motion search
    /// By which quantisers follow what later pictures refer to. Bilinear prediction loses more of
    /// what it refers to.
    double worth_power = 0;
    /// P pictures from one that is coded with all tools that may suit it to the next; 0 = none is.
    int tool_trials = 0;
    bool temporal_filter = false;  // of the source, where it is noisy
    bool thorough_b = false;       // of a B macroblock, more candidates are coded whole
};

const Preset& PresetOf(int level);

}  // namespace codecs::wmv9
