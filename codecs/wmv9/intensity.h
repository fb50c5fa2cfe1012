// Maps the brightness of a reference to that of a picture that fades (SMPTE ST 421, 8.3.8).
#pragma once

#include <optional>

#include "codecs/common/picture_cost.h"
#include "codecs/common/task_team.h"
#include "codecs/wmv9/activity.h"
#include "codecs/wmv9/frame.h"
#include "codecs/wmv9/picture.h"

namespace codecs::wmv9 {

/// The mapping that brings `reference`, which shows a picture so bright before, near `source`,
/// which is so bright now; none where it does not clearly help. The team does the work.
std::optional<Intensity> FindIntensity(const LumaPlane& source, const Brightness& now,
                                       const Frame& reference, const Brightness& before,
                                       TaskTeam& team);

/// `reference` mapped, with its margins.
void MapIntensity(const Intensity& intensity, const Frame& reference, Frame& mapped);

}  // namespace codecs::wmv9
