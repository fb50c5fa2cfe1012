// Decides for trials, which only have to tell what costs less.
#pragma once

#include "codecs/wmv9/mode_decision.h"

namespace codecs::wmv9 {

/// Codes bands of a picture, half of it, as `preset` says. The rest is as if it were skipped and
/// looked like the source.
class TrialDecision final : public ModeDecision {
  public:
    explicit TrialDecision(const Preset& preset) : decision_(preset) {}
    void Choose(const Picture& picture, const Estimates& estimates, int x, int y,
                Candidate& out) const override;

  private:
    const RdModeDecision decision_;
};

}  // namespace codecs::wmv9
