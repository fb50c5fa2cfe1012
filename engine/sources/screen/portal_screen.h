// The screen of a Wayland session, which its portal hands out, as a source of frames.
#pragma once

#include <memory>

#include "engine/base/av/live_source.h"
#include "engine/plan/screen_share.h"

namespace engine {

std::unique_ptr<ScreenShare> MakePortalShare();

/// Gives a frame when the desktop sends one and the rate allows it, at least one a second, with
/// the mouse pointer drawn in where the desktop can do that. Frames have the size of the shared
/// part at their time. The desktop takes its screen back when a read is woken or fails, and
/// otherwise with the end of the source.
/// Read throws platform::Error when the screen is shared no more.
/// @param share   made by MakePortalShare and asked with success; used up
/// @param frames  outlives the source and its frames
std::unique_ptr<LiveSource> OpenPortalScreen(std::shared_ptr<ScreenShare> share, FramePool& frames);

}  // namespace engine
