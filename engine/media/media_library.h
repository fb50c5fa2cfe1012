// The media library: all that works with FFmpeg, in a shared object of its own. FFmpeg's libraries
// bring close to two hundred others along, which would cost each start of a program more time than
// all else; a listing, help or repair needs none of them.
#pragma once

#include "engine/media/media_parts.h"

namespace engine {

/// Loads the library at the first call; it stays loaded. It stands beside the executable, or in
/// ../lib/tessivo seen from there. Any thread may call.
/// Throws platform::Error (unspecified) when it cannot be loaded; the next call tries again.
const MediaParts& MediaLibrary();

}  // namespace engine
