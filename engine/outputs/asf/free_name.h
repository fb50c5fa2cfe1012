// Names that nothing has yet, and renaming to them.
#pragma once

#include <string>

namespace engine {

/// "a-1.wmv" beside "a.wmv", or the next number of which neither a file nor a part is there.
std::string FreeNameBeside(const std::string& path);

namespace asf {

/// False = something has the new name, and nothing was renamed. Throws platform::Error, which tells
/// the new name.
bool RenameUnlessTaken(const std::string& from, const std::string& to);

/// Renames the file to a free name beside it, and returns that; "" when there is no file any more.
/// Throws platform::Error.
std::string SetAside(const std::string& path);

}  // namespace asf
}  // namespace engine
