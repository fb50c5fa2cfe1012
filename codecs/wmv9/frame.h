// A picture's samples with room around them for vectors that point outside.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "codecs/common/index.h"
#include "codecs/wmv9/encoder.h"

namespace codecs::wmv9 {

struct Plane {
    std::uint8_t* samples = nullptr;  // the top left one of the picture
    std::ptrdiff_t stride = 0;
    int width = 0;  // whole macroblocks
    int height = 0;

    std::uint8_t* At(int x, int y) const { return samples + y * stride + x; }
};

/// Luma, blue and red difference, in whole macroblocks.
class Frame {
  public:
    /// In macroblocks.
    Frame(int width, int height);

    const Plane& operator[](int plane) const { return planes_[Index(plane)]; }

    /// Fills rows of macroblocks from `first` to before `end`, repeating the last column and row of
    /// a picture of that width and height in samples of luma.
    void Load(const PictureView& picture, int width, int height, int first, int end);
    /// Repeats the samples of the edge into the margins.
    void Extend();
    PictureView View() const;

    /// How far samples may be read beyond the picture, in luma; half of it in chroma.
    static constexpr int kMargin = 64;

  private:
    std::array<std::vector<std::uint8_t>, 3> memory_;
    std::array<Plane, 3> planes_;
};

}  // namespace codecs::wmv9
