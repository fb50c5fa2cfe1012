// What trials of tools and of B pictures come to.
#pragma once

#include <array>
#include <cstddef>

#include "codecs/wmv9/coding_state.h"
#include "codecs/wmv9/picture_tools.h"
#include "codecs/wmv9/preset.h"

namespace codecs::wmv9 {

/// P pictures that a trial of tools codes with each of them, where as many are known. What they are
/// to each other as references shows in no single one.
constexpr int kToolPictures = 3;

/// Compares tools by what the same P pictures cost with each.
class ToolTrial {
  public:
    ToolTrial(const Preset& preset, const PictureTools& now);

    void Begin(const PictureTools& tools);
    /// What the next picture cost, one of kToolPictures at most. Returns whether those tools may
    /// still cost the least; if not, its other pictures need not be coded.
    bool Add(double cost);
    void End();

    /// Notes in `state` which cost the least, and when to look again.
    void Note(CodingState& state) const;

  private:
    struct Costs {
        std::array<double, kToolPictures> up_to{};  // each picture, together
        std::size_t count = 0;
    };

    const Preset& preset_;
    PictureTools best_;
    Costs least_;  // of the best ones
    PictureTools tools_;
    Costs costs_;
    bool may_win_ = true;
};

/// Compares how many B pictures there are in a row by what the same pictures cost, together with
/// the trials before it.
class BTrial {
  public:
    explicit BTrial(const CodingState& state) : costs_(state.b_costs), known_(costs_[0] > 0) {
        costs_[0] = 1;
    }

    /// So many in a row, as a part of what P pictures alone cost; more before fewer.
    void Add(int b_pictures, double part);
    /// Whether no shorter row needs to be tried.
    bool IsClear() const;

    void Note(CodingState& state) const;

  private:
    std::array<double, kMostBPictures + 1> costs_;
    const bool known_;
    int best_ = 0;
};

}  // namespace codecs::wmv9
