// From the tree as it was set up to the plan that is run: every contradiction is found here.
#pragma once

#include "engine/object_model/session_tree.h"
#include "engine/plan/encode_plan.h"
#include "platform/file_system.h"

namespace engine {

/// Reads the tree and the file system and changes neither. Throws Error with one clear text that
/// names both sides of the contradiction: invalid argument, path not found (of the output's
/// folder), not implemented (what the engine cannot do yet), 0xC00D1B59 (end mark past the end of
/// the source; checked last, so that a session whose marks are cleared then is whole).
///
/// Only the streams of the profile's content kind are planned; sources of the other kind rest.
EncodePlan MakePlan(const SessionTree& tree, platform::FileSystem& files);

}  // namespace engine
