// What the device conformance targets of Windows Media Video 9 allow.
#pragma once

#include <string>

#include "engine/plan/encode_plan.h"

namespace engine {

/// Makes the plan one that devices of the target can play: "SP" and "MP" (simple and main profile)
/// as far as the largest level of the profile goes, "SP@LL", "SP@ML", "MP@LL", "MP@ML" and "MP@HL"
/// within that level. The rest of the plan is there already. Throws Error (invalid argument) for
/// what is beyond the level, for other texts and for codecs that have no targets, Error (not
/// implemented) for "CP".
void PlanConformance(const std::string& target, VideoPlan& plan);

}  // namespace engine
