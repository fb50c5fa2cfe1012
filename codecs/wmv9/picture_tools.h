// The tools that a whole P picture is coded with, and what a coded picture costs.
#pragma once

#include <vector>

#include "codecs/wmv9/picture.h"
#include "codecs/wmv9/preset.h"

namespace codecs::wmv9 {

struct PictureTools {
    VectorMode mode = VectorMode::HalfBilinear;
    bool whole_8x8 = false;  // TTMBF, TTFRM: all transforms are 8x8
    bool operator==(const PictureTools&) const = default;

    /// B pictures have them too, as far as their syntax goes.
    void ApplyTo(PictureHeader& header) const;
};

/// To begin with.
PictureTools UsualTools(const Preset& preset);

/// What a P picture may be tried with. Half-sample bilinear prediction smooths the noise of the
/// reference, which quarter-sample bicubic prediction sharpens; small transforms code noise that no
/// later picture has any use for.
std::vector<PictureTools> ToolsToTry(const Preset& preset);

/// Squared error of what trials code, and what the bits are worth, in squared samples, at an
/// anchor's quantiser.
double TrialCost(const Frame& source, const Frame& result, double bits, double quantiser);

}  // namespace codecs::wmv9
