// Where the coded streams go.
#pragma once

#include <string>

#include "engine/plan/encode_plan.h"
#include "engine/plan/session_record.h"
#include "platform/file_system.h"

namespace engine {

/// Throws Error (not implemented) for outputs that are none yet.
void RefuseUnbuiltOutputs(const BroadcastRecord& broadcast);

/// The host's own name of the output file. Throws Error (invalid argument, path not found).
std::string CheckedOutput(const std::string& name, const SourceGroupRecord& group,
                          platform::FileSystem& files);

/// The limits of the container's packets. Throws Error (invalid argument).
void PlanPackets(const ProfileRecord& profile, EncodePlan& plan);

}  // namespace engine
