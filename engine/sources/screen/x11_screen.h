// The screen of an X11 desktop, or a part of it, as a source of frames.
#pragma once

#include <cstdint>
#include <memory>

#include "engine/base/av/live_source.h"
#include "engine/plan/screen_area.h"

namespace engine {

/// Gives a frame when something in the area has changed, the mouse pointer drawn in if the
/// area has it: as soon as
/// the rate allows, at most a quarter of an interval early (its time is then that much late), and
/// at least one a second. Frames have the size of the area at their time and the pixels of the
/// screen (BGR0 as a rule). TakeMissed counts how many frames the rate had room for while Read
/// was not called, once the screen has changed in the meantime. Throws platform::Error when the
/// screen or the area is not there, or cannot be recorded. Read throws when the server is gone, the
/// window was closed, or nothing is left of the area.
/// @param rate_thousandths  frames in 1000 seconds, above 0
/// @param frames            outlives the source and its frames
std::unique_ptr<LiveSource> OpenX11Screen(const ScreenArea& area, std::int32_t rate_thousandths,
                                          FramePool& frames);

}  // namespace engine
