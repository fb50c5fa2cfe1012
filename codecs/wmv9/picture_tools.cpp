#include "codecs/wmv9/picture_tools.h"

#include <cmath>

#include "codecs/wmv9/quantiser.h"

namespace codecs::wmv9 {
namespace {

constexpr int kBlock = 8;

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

double PictureCost(const Frame& source, const Frame& result, double bits, double quantiser) {
    const Kernels& kernels = BestKernels();
    std::int64_t error = 0;
    for (int plane = 0; plane < 3; ++plane) {
        const Plane& a = source[plane];
        const Plane& b = result[plane];
        for (int y = 0; y < a.height; y += kBlock)
            for (int x = 0; x < a.width; x += kBlock)
                error +=
                    kernels.squared(a.At(x, y), a.stride, b.At(x, y), b.stride, kBlock, kBlock);
    }
    const auto step = static_cast<int>(std::lround(2 * quantiser));
    const Quantiser made = Quantiser::Make(static_cast<int>(quantiser), step, false);
    return static_cast<double>(error) +
           static_cast<double>(made.lambda) / kErrorOfSquaredSample * bits;
}

}  // namespace codecs::wmv9
