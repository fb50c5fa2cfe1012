#include "codecs/wmv9/motion_vectors.h"

#include <algorithm>
#include <cstdlib>

#include "codecs/common/index.h"
#include "codecs/wmv9/b_fractions.h"

namespace codecs::wmv9 {
namespace {

constexpr int kHybridBeyond = 32;  // quarters

MotionVector MakeMotionVector(int x, int y) {
    return {static_cast<std::int16_t>(x), static_cast<std::int16_t>(y)};
}

MotionVector MedianOf(MotionVector a, MotionVector b, MotionVector c) {
    return MakeMotionVector(Median(a.x, b.x, c.x), Median(a.y, b.y, c.y));
}

// Vectors may point beyond the picture, but not far.
MotionVector NearPicture(MotionVector v, int least, int unit, int x, int y, const Picture& picture,
                         int origin_x, int origin_y) {
    const auto limit = [&](int value, int macroblock, int origin, int count) {
        const int place = unit * macroblock + origin;
        return std::min(std::max(value, least - place), unit * count - 4 - place);
    };
    return MakeMotionVector(limit(v.x, x, origin_x, picture.Width()),
                            limit(v.y, y, origin_y, picture.Height()));
}

struct Neighbour {
    MotionVector vector;
    bool exists = false;
};

// The block at (column, row) of the picture's 8x8 blocks of luma.
Neighbour BlockAt(const Picture& picture, int column, int row) {
    const Macroblock& macroblock = picture.grid.At(column >> 1, row >> 1);
    return {macroblock.vectors[Index((row & 1) * 2 + (column & 1))], true};
}

int Distance(MotionVector v, const Neighbour& other) {
    return std::abs(v.x - other.vector.x) + std::abs(v.y - other.vector.y);
}

VectorPrediction Predict(const Neighbour& above, const Neighbour& beside, const Neighbour& left) {
    VectorPrediction prediction;
    prediction.above = above.vector;
    prediction.left = left.vector;
    const int count = int{above.exists} + int{beside.exists} + int{left.exists};
    if (count > 1)
        prediction.median = MedianOf(above.vector, beside.vector, left.vector);
    else
        prediction.median = above.exists    ? above.vector
                            : beside.exists ? beside.vector
                                            : left.vector;
    return prediction;
}

void MarkHybrid(VectorPrediction& prediction, const Neighbour& above, const Neighbour& left) {
    prediction.is_hybrid = above.exists && left.exists &&
                           (Distance(prediction.median, above) > kHybridBeyond ||
                            Distance(prediction.median, left) > kHybridBeyond);
}

template <typename VectorOf>
MotionVector PredictB(const Picture& picture, int x, int y, VectorOf&& vector_of) {
    constexpr int kUnit = 32;
    constexpr int kLeast = -28;
    MotionVector predictor;
    if (y > 0) {
        const MotionVector above = vector_of(x, y - 1);
        if (picture.Width() == 1) {
            predictor = above;
        } else {
            const MotionVector beside = vector_of(x + 1 < picture.Width() ? x + 1 : x - 1, y - 1);
            predictor = MedianOf(above, beside, x > 0 ? vector_of(x - 1, y) : MotionVector());
        }
    } else if (x > 0) {
        predictor = vector_of(x - 1, y);
    }
    return NearPicture(predictor, kLeast, kUnit, x, y, picture, 0, 0);
}

int Scaled(int value, int scale, bool half) {
    return half ? 2 * ((value * scale + 255) >> 9) : (value * scale + 128) >> 8;
}

}  // namespace

VectorPrediction PredictVector(const Picture& picture, int x, int y) {
    Neighbour above;
    Neighbour beside;
    Neighbour left;
    if (y > 0) {
        above = BlockAt(picture, 2 * x, 2 * y - 1);
        if (picture.Width() > 1)
            beside = BlockAt(picture, 2 * x + (x + 1 < picture.Width() ? 2 : -1), 2 * y - 1);
    }
    if (x > 0) left = BlockAt(picture, 2 * x - 1, 2 * y);
    VectorPrediction prediction = Predict(above, beside, left);
    prediction.median = NearPicture(prediction.median, -60, 64, x, y, picture, 0, 0);
    MarkHybrid(prediction, above, left);
    return prediction;
}

VectorPrediction PredictBlockVector(const Picture& picture, int x, int y, int block,
                                    const Macroblock& current) {
    const int column = 2 * x + (block & 1);
    const int row = 2 * y + (block >> 1);
    const auto own = [&](int n) { return Neighbour{current.vectors[Index(n)], true}; };
    Neighbour above;
    Neighbour beside;
    Neighbour left;
    if (block >= 2) {
        above = own(block - 2);
        beside = own(block == 2 ? 1 : 0);
    } else if (y > 0) {
        above = BlockAt(picture, column, row - 1);
        const int offset = block == 0 ? (x == 0 ? 1 : -1) : (x + 1 == picture.Width() ? -1 : 1);
        beside = BlockAt(picture, column + offset, row - 1);
    }
    if ((block & 1) != 0)
        left = own(block - 1);
    else if (x > 0)
        left = BlockAt(picture, column - 1, row);
    VectorPrediction prediction = Predict(above, beside, left);
    prediction.median =
        NearPicture(prediction.median, -28, 64, x, y, picture, 32 * (block & 1), 32 * (block >> 1));
    MarkHybrid(prediction, above, left);
    return prediction;
}

MotionVector PredictForward(const Picture& picture, int x, int y) {
    return PredictB(picture, x, y, [&](int i, int j) { return picture.grid.At(i, j).vectors[0]; });
}

MotionVector PredictBackward(const Picture& picture, int x, int y) {
    return PredictB(picture, x, y, [&](int i, int j) { return picture.grid.At(i, j).backward; });
}

DirectVectors DeriveDirect(const Picture& picture, int x, int y) {
    DirectVectors direct;
    if (picture.anchor == nullptr) return direct;
    const Macroblock& anchor = picture.anchor->At(x, y);
    if (anchor.intra) return direct;
    const MotionVector v = CombinedVector(anchor);
    const int forward = BScale(picture.header.b_number, picture.header.b_pictures);
    const bool half = picture.header.HalfVectors();
    const auto derive = [&](int scale) {
        const auto limit = [](int value, int macroblock, int count) {
            return std::min(std::max(value, -60 - 64 * macroblock),
                            64 * count - 4 - 64 * macroblock);
        };
        return MakeMotionVector(limit(Scaled(v.x, scale, half), x, picture.Width()),
                                limit(Scaled(v.y, scale, half), y, picture.Height()));
    };
    direct.forward = derive(forward);
    direct.backward = derive(forward - 256);
    return direct;
}

MotionVector VectorLimit(int vector_range) {
    constexpr int kAcross[] = {256, 512, 2048, 4096};
    constexpr int kDown[] = {128, 256, 512, 1024};
    return MakeMotionVector(kAcross[vector_range], kDown[vector_range]);
}

VectorWindow WindowOf(const Picture& picture, int left, int top) {
    const MotionVector limit = VectorLimit(picture.header.vector_range);
    VectorWindow window;
    window.least = MakeMotionVector(std::max<int>(-limit.x, -4 * (15 + left)),
                                    std::max<int>(-limit.y, -4 * (15 + top)));
    window.largest =
        MakeMotionVector(std::min<int>(limit.x - 1, 4 * (16 * picture.Width() - 1 - left) + 3),
                         std::min<int>(limit.y - 1, 4 * (16 * picture.Height() - 1 - top) + 3));
    return window;
}

MotionVector Difference(MotionVector vector, MotionVector predictor, int vector_range) {
    const MotionVector limit = VectorLimit(vector_range);
    const auto wrap = [](int value, int range) {
        return ((value + range) & (2 * range - 1)) - range;
    };
    return MakeMotionVector(wrap(vector.x - predictor.x, limit.x),
                            wrap(vector.y - predictor.y, limit.y));
}

MotionVector CombinedVector(const Macroblock& macroblock) {
    if (!macroblock.four_mv) return macroblock.vectors[0];
    const auto middle = [](int a, int b, int c, int d) {
        const int sum = a + b + c + d;
        return (sum - std::min({a, b, c, d}) - std::max({a, b, c, d})) / 2;
    };
    const std::array<MotionVector, 4>& v = macroblock.vectors;
    return MakeMotionVector(middle(v[0].x, v[1].x, v[2].x, v[3].x),
                            middle(v[0].y, v[1].y, v[2].y, v[3].y));
}

MotionVector ChromaVector(MotionVector luma) {
    const auto halved = [](int m) { return (m + ((m & 3) == 3 ? 1 : 0)) >> 1; };
    return MakeMotionVector(halved(luma.x), halved(luma.y));
}

MotionVector Shortened(MotionVector chroma) {
    const auto even = [](int c) { return c > 0 ? c - (c & 1) : c + (c & 1); };
    return MakeMotionVector(even(chroma.x), even(chroma.y));
}

}  // namespace codecs::wmv9
