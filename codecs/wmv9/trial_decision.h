// Decides for trials, which only have to tell what costs less.
#pragma once

#include "codecs/wmv9/mode_decision.h"

namespace codecs::wmv9 {

/// Whether trials code a row of macroblocks: two bands of a picture, a quarter of it.
bool IsTried(int y, int height);

/// Decides what is tried as `preset` says, and no other row.
class TrialDecision final : public ModeDecision {
  public:
    explicit TrialDecision(const Preset& preset) : decision_(preset) {}
    void Choose(const Picture& picture, const Estimates& estimates, int x, int y,
                Candidate& out) const override {
        decision_.Choose(picture, estimates, x, y, out);
    }
    bool Decides(const Picture& picture, int y) const override {
        return IsTried(y, picture.Height());
    }

  private:
    const RdModeDecision decision_;
};

}  // namespace codecs::wmv9
