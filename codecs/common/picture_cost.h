// How hard a picture is to code, judged quickly by its luma.
#pragma once

#include <cstddef>
#include <cstdint>

namespace codecs {

/// Eight bits a sample; `stride` is the distance of two rows in bytes and may be negative.
struct LumaPlane {
    const std::uint8_t* samples = nullptr;
    std::ptrdiff_t stride = 0;
    int width = 0;
    int height = 0;
};

/// What has to be coded of a picture, as a part of its IntraCost, of which a motion search has
/// found so much new, from 0 to 1. Fitted to what pictures take, on the clips of bench/rates.
double NewPart(double found_new);

/// The sum of how much samples differ from their neighbours: grows with the detail that an I
/// picture holds. Looks at every fourth row. Not below 1.
double IntraCost(const LumaPlane& picture);

/// The sum of how much samples differ from those of the picture before it, of the same size.
/// Looks at every fourth row.
double InterCost(const LumaPlane& picture, const LumaPlane& before);

}  // namespace codecs
