// The plan of the audio stream: what its source and the audience say about it.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "engine/plan/encode_plan.h"
#include "engine/plan/profile_record.h"
#include "engine/plan/source_record.h"
#include "platform/file_system.h"

namespace engine {

/// The stream without its input. Throws Error (invalid argument), and for an optimization
/// definition file (invalid data, file not found, access denied).
AudioPlan PlanAudio(const AudioSourceRecord& source, const ProfileRecord& profile,
                    platform::FileSystem& files);

/// The levels that the attributes SurroundMix, CenterMix and LFEMix give, as numbers from -144 to
/// 0; an attribute that is absent leaves the usual one. Throws Error (invalid argument).
Downmix PlanDownmix(
    const std::vector<std::pair<std::string, platform::AttributeValue>>& attributes);

}  // namespace engine
