// The files that a session names, seen from the folder of its own file.
#pragma once

#include <string>

#include "platform/file_system.h"

namespace engine::files {

class SessionFolder {
  public:
    /// @param files         must outlive it
    /// @param session_path  of the session's own file
    SessionFolder(platform::FileSystem& files, const std::string& session_path);

    /// The absolute path of a name in the session: relative ones count from the session's folder.
    std::string Resolve(const std::string& name) const;
    /// The same, but a relative name that means the same here stays as it stands.
    std::string ResolveOutput(const std::string& name) const;

    /// How the session names a file: what is in its folder or below by the rest of its path.
    std::string NameFor(const std::string& path) const;
    /// How the session names an output: as it was given where that means the same there.
    std::string NameForOutput(const std::string& name) const;

    /// The text of a profile file that the session names. Throws Error.
    std::string ReadProfileText(const std::string& name) const;

  private:
    bool IsRelative(const std::string& name) const;

    platform::FileSystem& files_;
    std::string folder_;
};

}  // namespace engine::files
