// Decides at random how macroblocks are coded, so that streams use all that the format has.
#pragma once

#include <cstdint>

#include "codecs/wmv9/mode_decision.h"

namespace wmv9_conformance {

/// Of one picture. Whatever is legal may come, however poor; the same for the same seed.
class RandomModeDecision final : public codecs::wmv9::ModeDecision {
  public:
    explicit RandomModeDecision(std::uint64_t seed) : seed_(seed) {}
    void Choose(const codecs::wmv9::Picture& picture, const codecs::wmv9::Estimates& estimates,
                int x, int y, codecs::wmv9::Candidate& out) const override;

  private:
    std::uint64_t seed_;
};

}  // namespace wmv9_conformance
