// From a session as it was set up to the plan that is run: every contradiction is found here.
#pragma once

#include "engine/plan/encode_plan.h"
#include "engine/plan/session_record.h"
#include "engine/prepare/prepare_parts.h"

namespace engine {

/// Reads the file system and changes nothing. Throws Error with one clear text that names both
/// sides of the contradiction: invalid argument, path not found (of the output's folder), not
/// implemented (what the engine cannot do yet), 0xC00D1B59 (end mark past the end of the source;
/// checked last, so that a session whose marks are cleared then is whole).
///
/// Only the streams of the profile's content kind are planned; sources of the other kind rest.
EncodePlan MakePlan(const SessionRecord& session, const PrepareParts& parts);

}  // namespace engine
