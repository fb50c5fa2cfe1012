// The device nodes of the kernel's video interface.
#pragma once

#include <vector>

#include "engine/plan/device_facts.h"

namespace engine {

/// By number. A node that this user may not open is taken for a camera when it is the first of its
/// device; others that cannot be opened (unplugged meanwhile) are passed over.
std::vector<VideoNode> VideoNodes();

}  // namespace engine
