// Names and folders of the files that a session writes.
#pragma once

#include <string>

#include "platform/file_system.h"

namespace session {

/// Makes the folder, the host's own path, with the parents that are missing; one that exists is
/// left as it is. Throws
/// platform::Error (access denied, path not found, file exists) that names the folder.
void CreateOutputFolder(platform::FileSystem& files, const std::string& path);

/// A name of the `file` in `folder`, with the host's separator between them. No character of
/// `file` separates.
std::string PathInFolder(platform::FileSystem& files, const std::string& folder,
                         const std::string& file);

}  // namespace session
