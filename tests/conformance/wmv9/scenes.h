// Pictures made from nothing, to be encoded.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "codecs/wmv9/encoder.h"

namespace wmv9_conformance {

enum class Content : std::uint8_t { Texture, Noise, BlackAndWhite, Flat, Checkers, Patches, Fade };
constexpr int kContents = 7;

/// A picture of its own, without margins.
struct PlanarPicture {
    int width = 0;  // of luma
    int height = 0;
    std::array<std::vector<std::uint8_t>, 3> planes;

    codecs::wmv9::PictureView View() const;
};

/// The picture at `time` of a scene; what it shows moves and changes from one to the next.
PlanarPicture MakePicture(Content content, int width, int height, int time, std::uint64_t seed);

/// A copy of what a view shows.
PlanarPicture CopyOf(const codecs::wmv9::PictureView& view, int width, int height);

}  // namespace wmv9_conformance
