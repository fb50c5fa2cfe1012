// The part of a source's file that is encoded.
#pragma once

#include "engine/plan/encode_plan.h"
#include "engine/plan/source_record.h"

namespace engine {

/// Checks the marks against each other and against the end of the file, which is that of its longer
/// stream. Throws Error (invalid argument, 0xC00D1B59).
InputPlan PlanInput(const AudioSourceRecord& source);
InputPlan PlanInput(const VideoSourceRecord& source);

/// How long the part of the source between its marks is; 0 = unknown.
Ticks EncodedLength(const AudioSourceRecord& source);
Ticks EncodedLength(const VideoSourceRecord& source);

}  // namespace engine
