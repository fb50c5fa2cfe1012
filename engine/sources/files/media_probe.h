// What a media file holds, read once when a source is given its input.
#pragma once

#include <string>

#include "engine/plan/media_file_info.h"

namespace engine {

/// Throws platform::Error: file not found, access denied, invalid data (not a media file, or one
/// without audio and video); the description names the file.
MediaFileInfo ProbeMediaFile(const std::string& path);

}  // namespace engine
