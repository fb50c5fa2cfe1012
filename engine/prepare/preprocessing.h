// What is done to frames before they are coded, and whether they are coded as fields.
#pragma once

#include "engine/plan/encode_plan.h"
#include "engine/plan/profile_record.h"
#include "engine/plan/source_record.h"

namespace engine {

/// The filters that the source's Optimization names, and the field coding that it or the profile
/// asks for, in a plan whose codec is there already. Throws Error (not implemented).
void PlanPreprocessing(const VideoSourceRecord& source, const ProfileRecord& profile,
                       VideoPlan& plan);

}  // namespace engine
