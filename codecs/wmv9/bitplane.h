// A bit for each macroblock of a picture, and its codings (SMPTE ST 421, 8.7).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "codecs/common/bit_writer.h"
#include "codecs/common/index.h"

namespace codecs::wmv9 {

class BitPlane {
  public:
    BitPlane(int width, int height)
        : width_(width), height_(height), bits_(Index(width) * Index(height)) {}

    int Width() const { return width_; }
    int Height() const { return height_; }
    bool At(int x, int y) const { return bits_[Place(x, y)] != 0; }
    void Set(int x, int y, bool bit) { bits_[Place(x, y)] = bit ? 1 : 0; }
    /// A byte each, row by row.
    std::span<const std::uint8_t> Bits() const { return bits_; }
    std::span<std::uint8_t> Bits() { return bits_; }

  private:
    std::size_t Place(int x, int y) const { return Index(y) * Index(width_) + Index(x); }

    int width_;
    int height_;
    std::vector<std::uint8_t> bits_;
};

enum class PlaneMode : std::uint8_t {
    Raw,
    Pairs,          // Norm-2
    PairsOfChange,  // Diff-2
    Tiles,          // Norm-6
    TilesOfChange,  // Diff-6
    Rows,           // Rowskip
    Columns         // Colskip
};
constexpr int kPlaneModes = 7;

/// How a plane is written. Raw leaves its bits to the macroblocks.
struct PlaneCoding {
    PlaneMode mode = PlaneMode::Rows;  // IMODE
    bool invert = false;               // INVERT
    bool operator==(const PlaneCoding&) const = default;
};

/// The cheapest but raw.
PlaneCoding CheapestCoding(const BitPlane& plane);
void WritePlane(BitWriter& out, const BitPlane& plane, PlaneCoding coding);

}  // namespace codecs::wmv9
