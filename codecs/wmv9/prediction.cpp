#include "codecs/wmv9/prediction.h"

#include "codecs/common/index.h"

namespace codecs::wmv9 {
namespace {

constexpr int kLuma = 16;
constexpr int kChroma = 8;

MotionVector ChromaOf(const Picture& picture, MotionVector luma) {
    const MotionVector chroma = ChromaVector(luma);
    return picture.sequence.short_chroma_vectors ? Shortened(chroma) : chroma;
}

void PredictChroma(const Picture& picture, const Frame& reference, MotionVector luma, int x, int y,
                   Samples& out) {
    const MotionVector v = ChromaOf(picture, luma);
    for (int n = 4; n < kBlocks; ++n) {
        const Plane& plane = reference[n - 3];
        picture.kernels.chroma(out.Block(n), kChroma,
                               plane.At(kChroma * x + (v.x >> 2), kChroma * y + (v.y >> 2)),
                               plane.stride, v.x & 3, v.y & 3, picture.header.rounding);
    }
}

void PredictOne(const Picture& picture, const Frame& reference, MotionVector vector, int x, int y,
                Samples& out) {
    PredictLuma(picture, reference, vector, kLuma * x, kLuma * y, kLuma, out.values.data(), kLuma);
    PredictChroma(picture, reference, vector, x, y, out);
}

void PredictFourMv(const Picture& picture, int x, int y, const Macroblock& macroblock,
                   Samples& out) {
    for (int n = 0; n < 4; ++n)
        PredictLuma(picture, *picture.past, macroblock.vectors[Index(n)], kLuma * x + 8 * (n & 1),
                    kLuma * y + 8 * (n >> 1), 8, out.Block(n), kLuma);
    PredictChroma(picture, *picture.past, CombinedVector(macroblock), x, y, out);
}

}  // namespace

void PredictLuma(const Picture& picture, const Frame& reference, MotionVector vector, int left,
                 int top, int size, std::uint8_t* out, std::ptrdiff_t stride) {
    const Plane& plane = reference[0];
    const std::uint8_t* const source = plane.At(left + (vector.x >> 2), top + (vector.y >> 2));
    const auto kernel = picture.header.mode == VectorMode::HalfBilinear ? picture.kernels.bilinear
                                                                        : picture.kernels.bicubic;
    kernel(out, stride, source, plane.stride, size, size, vector.x & 3, vector.y & 3,
           picture.header.rounding);
}

void Predict(const Picture& picture, int x, int y, const Macroblock& macroblock, Samples& out) {
    if (macroblock.four_mv) return PredictFourMv(picture, x, y, macroblock, out);
    if (!picture.header.IsB() || macroblock.direction == Direction::Forward)
        return PredictOne(picture, *picture.past, macroblock.vectors[0], x, y, out);
    if (macroblock.direction == Direction::Backward)
        return PredictOne(picture, *picture.future, macroblock.backward, x, y, out);
    Samples later;
    PredictOne(picture, *picture.past, macroblock.vectors[0], x, y, out);
    PredictOne(picture, *picture.future, macroblock.backward, x, y, later);
    picture.kernels.average(out.values.data(), kLuma, out.values.data(), kLuma, later.values.data(),
                            kLuma, kLuma, kLuma);
    for (int n = 4; n < kBlocks; ++n)
        picture.kernels.average(out.Block(n), kChroma, out.Block(n), kChroma, later.Block(n),
                                kChroma, kChroma, kChroma);
}

bool ChromaFits(const Picture& picture, int x, int y, const Macroblock& macroblock) {
    const MotionVector v = ChromaOf(picture, CombinedVector(macroblock));
    const auto fits = [](int vector, int macroblock_place, int count) {
        const int place = kChroma * macroblock_place + (vector >> 2);
        return place >= -kChroma && place < kChroma * count;
    };
    return fits(v.x, x, picture.Width()) && fits(v.y, y, picture.Height());
}

}  // namespace codecs::wmv9
