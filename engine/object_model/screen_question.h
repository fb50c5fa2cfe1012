// Waits for the person to hand out a screen, while the program's windows stay alive.
#pragma once

#include "engine/plan/encode_plan.h"
#include "engine/plan/screen_share.h"
#include "platform/event_loop.h"

namespace engine {

/// Asks for the screen on a thread of its own and runs the loop until the answer is there; a share
/// that is cancelled meanwhile answers with an error. Throws what asking throws. User-interface
/// thread.
ScreenSize AskForScreen(platform::EventLoop& loop, ScreenShare& share, const CapturePlan& wanted);

}  // namespace engine
