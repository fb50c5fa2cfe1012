// Filters a picture along the motion of those beside it, so that noise is not coded.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "codecs/common/task_team.h"
#include "codecs/wmv9/encoder.h"
#include "codecs/wmv9/frame.h"
#include "codecs/wmv9/kernels.h"
#include "codecs/wmv9/lookahead.h"

namespace codecs::wmv9 {

/// Motion-compensated temporal filtering, as JVET-O0549 has it: each sample becomes the weighted
/// mean of itself and of where it is found in the pictures beside. What differs by more than the
/// quantiser loses weight, as do all pictures where a block is found the worse the farther it is
/// looked for: noise is as different everywhere. One thread at a time.
class TemporalFilter {
  public:
    /// @param width, height  of the pictures, in samples of luma
    /// @param lookahead      knows what moves
    TemporalFilter(int width, int height, const Lookahead& lookahead, TaskTeam& team);

    /// Of the macroblocks that are whole, where two pictures beside are known at least.
    /// @param source     the picture, as it was loaded
    /// @param number     of the picture in the look-ahead
    /// @param beside     pictures as they are shown, the first of which has the number `first`
    /// @param strength   of the nearest pictures beside the picture's own, 0 to 1
    void Apply(Frame& source, int number, std::span<const PictureView> beside, int first,
               double quantiser, double strength);

  private:
    static constexpr int kMost = 4;  // pictures beside

    struct Reference {
        PictureView view;
        int number = 0;
        double part = 0;  // of the strength
    };

    // Where a macroblock is in the pictures beside.
    struct Found {
        alignas(64) std::uint8_t samples[kMost][256];  // then those of its chroma
        std::array<Displacement, kMost> moves{};       // in quarters of a sample of luma
        std::array<std::int16_t, kMost> strengths{};
    };

    // Of some macroblocks of a row.
    struct Probe {
        int count = 0;
        double change = 0;  // sum of squares
    };

    void FindReferences(std::span<const PictureView> beside, int first);
    /// The mean square, of a few macroblocks.
    double ChangeOfSome(const Frame& source);
    /// Where the look-ahead saw a macroblock, in whole samples.
    Displacement LikelyMove(const Reference& reference, int column, int row) const;
    /// In quarters of a sample. `at_rest` is how much a macroblock differs that stays where it is.
    Displacement FindMove(const Reference& reference, const Plane& source, int column, int row,
                          std::uint32_t at_rest, Displacement left) const;
    /// `found` is what was found of the macroblock to the left, then of this one. False where
    /// there is little to take out, or more than noise.
    bool Find(const Plane& source, int column, int row, Found& found) const;
    void Blend(std::uint8_t* samples, std::ptrdiff_t stride, int size, const Found& found) const;
    void Blend(Frame& source, int column, int row, Found& found) const;
    bool Holds(Displacement quarters, int column, int row) const;

    const Kernels& kernels_;
    const int width_;  // whole macroblocks
    const int height_;
    const int picture_width_;
    const int picture_height_;
    const Lookahead& lookahead_;
    TaskTeam& team_;
    int number_ = 0;  // of the picture
    std::array<Reference, kMost> references_;
    int count_ = 0;
    int reach_ = 0;
    double strength_ = 0;
    std::uint32_t near_enough_ = 0;  // a sum of differences
    std::vector<Probe> probes_;      // of rows
};

}  // namespace codecs::wmv9
