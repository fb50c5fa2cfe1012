// Files that are read and written in one piece.
#pragma once

#include <cstddef>
#include <string>

namespace platform::host {

/// All bytes of a file. Never waits. Throws Error as FileSystem::ReadBytes.
std::string ReadWholeFile(const std::string& host_path, std::size_t most);

/// Writes beside the file and renames, so that under the name there is always a whole file. Throws
/// Error as FileSystem::WriteBytes.
void WriteWholeFile(const std::string& host_path, const std::string& bytes);

}  // namespace platform::host
