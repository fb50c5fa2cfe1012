// One way to code a macroblock, worked out whole.
#pragma once

#include <array>
#include <cstdint>
#include <limits>

#include "codecs/common/index.h"
#include "codecs/wmv9/macroblock.h"
#include "codecs/wmv9/picture.h"

namespace codecs::wmv9 {

/// Where a block stands in a macroblock's own samples: luma in rows of 16, then blue and red
/// difference in rows of 8.
struct BlockPlace {
    int plane;
    int x;  // in the plane's part of the macroblock
    int y;
    int offset;
    int stride;
};

// clang-format off
constexpr std::array<BlockPlace, kBlocks> kBlockPlaces = {{
    // plane x  y  offset stride
    {0,      0, 0,   0,   16},
    {0,      8, 0,   8,   16},
    {0,      0, 8, 128,   16},
    {0,      8, 8, 136,   16},
    {1,      0, 0, 256,    8},
    {2,      0, 0, 320,    8},
}};
// clang-format on
constexpr int kMacroblockSamples = 384;

struct alignas(64) Samples {
    std::array<std::uint8_t, kMacroblockSamples> values;

    std::uint8_t* Block(int n) { return values.data() + kBlockPlaces[Index(n)].offset; }
    const std::uint8_t* Block(int n) const { return values.data() + kBlockPlaces[Index(n)].offset; }
};

/// Rows of 8.
struct alignas(64) Block : std::array<std::int16_t, 64> {};
constexpr Block kNoLevels{};

/// Of a transform, in squared eighths.
inline std::int64_t EnergyOf(const Block& coefficients) {
    std::int32_t energy = 0;  // two to the 28th at most
    for (const std::int16_t c : coefficients) energy += c * c;
    return energy;
}

struct Blocks {
    std::array<Block, kBlocks> values;
    Block& operator[](int n) { return values[Index(n)]; }
    const Block& operator[](int n) const { return values[Index(n)]; }
};

constexpr std::int64_t kNoLimit = std::numeric_limits<std::int64_t>::max();  // of a cost

struct Candidate {
    Macroblock macroblock;
    Blocks levels;    // as they are written
    Blocks residual;  // of intra blocks, before it is clipped; only where pictures overlap
    Samples samples;  // reconstructed, before all filters
    std::array<BlockEdge, kBlocks> edges;  // of an intra macroblock
    int bits = 0;
    std::int64_t error = 0;  // squared eighths

    /// What the other means to whoever writes it.
    void Take(const Candidate& other) {
        macroblock = other.macroblock;
        samples = other.samples;
        bits = other.bits;
        error = other.error;
        if (macroblock.coded != 0) levels = other.levels;
        if (!macroblock.intra) return;
        residual = other.residual;
        edges = other.edges;
    }
    std::int64_t RdCost(std::int64_t lambda) const { return error + lambda * bits; }
};

/// The source's block.
inline const std::uint8_t* SourceBlock(const Frame& frame, int x, int y, int n) {
    const BlockPlace& place = kBlockPlaces[Index(n)];
    const int unit = place.plane == 0 ? 16 : 8;
    return frame[place.plane].At(unit * x + place.x, unit * y + place.y);
}

}  // namespace codecs::wmv9
