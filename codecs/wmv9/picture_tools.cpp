#include "codecs/wmv9/picture_tools.h"

#include "codecs/wmv9/trial_decision.h"

namespace codecs::wmv9 {
namespace {

// Of the squared step, what a bit is worth among whole pictures. Chosen by hand on the clips of
// bench/quality, see docs/video9.md.
constexpr double kPictureLambda = 0.26;

}  // namespace

void PictureTools::ApplyTo(PictureHeader& header) const {
    header.mode = mode;
    if (header.IsB() && mode == VectorMode::Mixed) header.mode = VectorMode::Quarter;
    header.shape.reset();
    if (whole_8x8) header.shape = Shape::Whole8x8;
}

PictureTools UsualTools(const Preset& preset) {
    if (preset.four_mv) return {VectorMode::Mixed, false};
    return {preset.quarter ? VectorMode::Quarter : VectorMode::HalfBilinear,
            preset.shapes == ShapeBit(Shape::Whole8x8)};
}

std::vector<PictureTools> ToolsToTry(const Preset& preset) {
    return {
        UsualTools(preset), {VectorMode::HalfBilinear, false}, {VectorMode::HalfBilinear, true}};
}

double TrialCost(const Frame& source, const Frame& result, double bits, double quantiser) {
    const Kernels& kernels = BestKernels();
    std::int64_t error = 0;
    for (int plane = 0; plane < 3; ++plane) {
        const Plane& a = source[plane];
        const Plane& b = result[plane];
        const int size = plane == 0 ? 16 : 8;
        for (int y = 0; y < a.height; y += size)
            for (int x = 0; IsTried(y / size, a.height / size) && x < a.width; x += size)
                error += kernels.squared(a.At(x, y), a.stride, b.At(x, y), b.stride, size, size);
    }
    const double step = 2 * quantiser;
    return static_cast<double>(error) + kPictureLambda * step * step * bits;
}

}  // namespace codecs::wmv9
