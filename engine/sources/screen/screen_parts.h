// What of this machine's screen can be recorded by itself.
#pragma once

#include "platform/screen_parts.h"

namespace engine {

/// Windows of the desktop itself (panels, menus and the like) and of this program are left out.
/// Throws platform::Error when there is no X server. Blocks as long as an X server that hangs.
platform::ScreenParts FindScreenParts();

}  // namespace engine
