// The file that was looked at last, still open: who looks at one reads it next, and to find its
// streams takes decoding some frames.
#pragma once

#include <optional>
#include <string>

#include "engine/sources/files/open_media.h"

namespace engine {

/// In place of what was kept before. Any thread, as the next one.
void KeepMedia(const std::string& path, OpenMedia media);
/// What was kept, as it was when it had just been opened, unless the file has changed since or is
/// another one.
std::optional<OpenMedia> TakeKeptMedia(const std::string& path);

}  // namespace engine
