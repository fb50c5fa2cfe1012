// Decides how macroblocks are coded.
#pragma once

#include <array>

#include "codecs/wmv9/candidate.h"
#include "codecs/wmv9/estimates.h"
#include "codecs/wmv9/motion_vectors.h"
#include "codecs/wmv9/preset.h"
#include "codecs/wmv9/quantiser.h"

namespace codecs::wmv9 {

/// Asked for each macroblock of a picture, from several threads where rows are coded side by side:
/// those to the left, above, and above right are ready then.
class ModeDecision {
  public:
    virtual ~ModeDecision() = default;
    /// Works out the macroblock at (x, y) whole.
    virtual void Choose(const Picture& picture, const Estimates& estimates, int x, int y,
                        Candidate& out) const = 0;
    /// False where a row of macroblocks is not decided at all: it is skipped.
    virtual bool Decides(const Picture& /*picture*/, int /*y*/) const { return true; }
};

/// By bits and error, as hard as the preset says.
class RdModeDecision final : public ModeDecision {
  public:
    explicit RdModeDecision(const Preset& preset);
    void Choose(const Picture& picture, const Estimates& estimates, int x, int y,
                Candidate& out) const override;

  private:
    const Preset& preset_;
    // By number, and whether there is half a quantiser more.
    std::array<std::array<Quantiser, 2>, kCoarsestAsked + 1> quantisers_;
};

/// Sets the vectors of a macroblock with one, the difference, and what names the predictor.
void SetVector(Macroblock& macroblock, MotionVector vector, const VectorPrediction& prediction,
               const PictureHeader& header);

}  // namespace codecs::wmv9
