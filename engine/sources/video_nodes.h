// The device nodes of the kernel's video interface.
#pragma once

#include <vector>

#include "engine/sources/device_facts.h"

namespace engine {

/// By number. Nodes that cannot be opened (no permission, unplugged meanwhile) are passed over.
std::vector<VideoNode> VideoNodes();

}  // namespace engine
