// The screens of the desktop that this process runs in.
#pragma once

#include "engine/plan/device_facts.h"

namespace engine {

/// A Wayland desktop hands its screens out through its portal, which asks the person; only that
/// there is one can be known beforehand. Blocks as long as an X server that hangs.
ScreenFacts Screens();

}  // namespace engine
