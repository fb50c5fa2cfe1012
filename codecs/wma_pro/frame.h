// A frame on its way from coefficients to bits.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace codecs::wma_pro {

/// How a channel's coefficients are written.
struct CoefficientPlan {
    int bits = 0;
    int table = 0;   // of runs and levels
    int vector = 0;  // how many coefficients go before those, four at a time
};

enum class ScaleFactorForm : std::uint8_t {
    Whole,    // each by its difference to the one before
    Reused,   // those of the channel's last block that had some
    Changed,  // these, and what has changed
};

/// One channel of a block.
struct BlockChannel {
    // What is to be coded.
    std::vector<float> coefficients;  // as of 16-bit samples; what lies above is silent
    std::vector<float> steps_db;      // of each band: the step that is wanted, beside others
    // How it is coded. A band's step is step_db less what its scale factor lacks to the largest.
    int step_db = 0;
    ScaleFactorForm form = ScaleFactorForm::Whole;
    std::vector<int> scale_factors;  // of each band
    std::vector<int> known_factors;  // those of a block before, for the bands of this one
    std::vector<int> levels;         // of each coefficient
    bool transmitted = false;        // any is not zero
    CoefficientPlan plan;
};

/// Two channels that may be coded as sum and difference, band by band.
struct BlockPair {
    bool mixes = false;  // any band
    std::vector<bool> mixed;
};

struct Block {
    int size_index = 0;  // in StreamFormat::blocks
    std::vector<BlockChannel> channels;
    std::vector<BlockPair> pairs;
};

struct Frame {
    std::vector<Block> blocks;
};

}  // namespace codecs::wma_pro
