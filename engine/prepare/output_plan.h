// Where the coded streams go.
#pragma once

#include <vector>

#include "engine/plan/encode_plan.h"
#include "engine/plan/session_record.h"
#include "engine/prepare/prepare_parts.h"

namespace engine {

/// What the session asks for, at least one; those that may refuse to begin come first. `keeps_file`
/// as FileOutput has it. Throws Error (invalid argument, path not found, not implemented).
std::vector<OutputPlan> PlanOutputs(const SessionRecord& session, const SourceGroupRecord& group,
                                    bool keeps_file, const PrepareParts& parts);

/// What is streamed has key frames for those who join. Nothing else is changed.
void PlanJoining(EncodePlan& plan);

/// The limits of the container's packets. Throws Error (invalid argument).
void PlanPackets(const ProfileRecord& profile, EncodePlan& plan);

}  // namespace engine
