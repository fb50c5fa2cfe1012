// Prediction of motion vectors, their limits, and what is derived from them (SMPTE ST 421, 8.3.5).
#pragma once

#include <array>

#include "codecs/wmv9/picture.h"

namespace codecs::wmv9 {

/// What a vector is predicted from. Hybrid prediction: where two predictors differ much from their
/// median, the stream names which of them is meant (HYBRIDPRED).
struct VectorPrediction {
    MotionVector median;  // brought near the picture
    MotionVector above;
    MotionVector left;
    bool is_hybrid = false;

    MotionVector For(Hybrid hybrid) const {
        return hybrid == Hybrid::None ? median : hybrid == Hybrid::Above ? above : left;
    }
};

/// Of the one vector of a macroblock, or of block `block` of 4MV; those before it must be set in
/// `current`.
VectorPrediction PredictVector(const Picture& picture, int x, int y);
VectorPrediction PredictBlockVector(const Picture& picture, int x, int y, int block,
                                    const Macroblock& current);

/// Of a B picture, from vectors of one kind.
MotionVector PredictForward(const Picture& picture, int x, int y);
MotionVector PredictBackward(const Picture& picture, int x, int y);

/// The vectors that follow from the anchor's macroblock at the same place.
struct DirectVectors {
    MotionVector forward;
    MotionVector backward;
};
DirectVectors DeriveDirect(const Picture& picture, int x, int y);

/// Quarters from the left and top edge within which a vector can be written: [-limit, limit - 1].
MotionVector VectorLimit(int vector_range);
/// The least and largest vector of a block at (left, top), in samples of luma, so that it can be
/// written and that all decoders take the same samples.
struct VectorWindow {
    MotionVector least;
    MotionVector largest;
    bool Holds(MotionVector v) const {
        return v.x >= least.x && v.x <= largest.x && v.y >= least.y && v.y <= largest.y;
    }
};
VectorWindow WindowOf(const Picture& picture, int left, int top);

/// `vector` less `predictor` as it is written, wrapped into the range.
MotionVector Difference(MotionVector vector, MotionVector predictor, int vector_range);

/// The vector of luma that chroma follows: of a macroblock with 4MV their middle.
MotionVector CombinedVector(const Macroblock& macroblock);
/// In quarters of a chroma sample, before it is shortened for the Simple profile.
MotionVector ChromaVector(MotionVector luma);
/// Rounded towards zero to halves of a sample.
MotionVector Shortened(MotionVector chroma);

inline int Median(int a, int b, int c) {
    return std::max(std::min(a, b), std::min(std::max(a, b), c));
}

}  // namespace codecs::wmv9
