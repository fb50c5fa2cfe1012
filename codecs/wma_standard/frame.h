// A frame on its way from coefficients to bits.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "codecs/wma_standard/stream_format.h"

namespace codecs::wma_standard {

constexpr int kMostChannels = 2;

/// One channel of a block, or the half sum or half difference of both.
struct BlockChannel {
    // What is to be coded.
    std::vector<float> coefficients;  // those of the block that may be coded
    std::vector<int> shape;           // of each band: the wanted exponent, -60 to 0
    std::vector<float> peaks;         // of each band: the largest magnitude
    // How it is coded.
    bool coded = false;
    std::vector<int> exponents;  // of each band, up to 0; the largest is 0
    std::vector<std::int16_t> levels;
    std::vector<bool> noise;        // of each high band
    std::vector<int> noise_levels;  // of those, dB
};

struct Block {
    int size_index = 0;  // in StreamFormat::blocks
    bool sum_difference = false;
    double step_db = 0;  // the largest one that is wanted, beside those of other blocks
    bool new_exponents = true;
    int gain = 1;
    std::array<BlockChannel, kMostChannels> channels;
};

struct Frame {
    std::vector<Block> blocks;
    int previous_index = 0;  // the size of the block before the frame ...
    int next_index = 0;      // ... and of the one after it
};

}  // namespace codecs::wma_standard
