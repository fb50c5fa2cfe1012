#include "engine/files/session_folder.h"

#include "engine/files/file_text.h"
#include "platform/text.h"

namespace engine::files {

SessionFolder::SessionFolder(platform::FileSystem& files, const std::string& session_path)
    : files_(files), folder_(files.GetParentFolderName(files.GetAbsolutePathName(session_path))) {}

bool SessionFolder::IsRelative(const std::string& name) const {
    // Behind "./" only a relative name still means the same.
    return files_.GetAbsolutePathName(name) == files_.GetAbsolutePathName("./" + name);
}

std::string SessionFolder::Resolve(const std::string& name) const {
    if (!IsRelative(name)) return files_.GetAbsolutePathName(name);
    return files_.GetAbsolutePathName(folder_ + files_.Separator() + name);
}

std::string SessionFolder::ResolveOutput(const std::string& name) const {
    const std::string path = Resolve(name);
    return path == files_.GetAbsolutePathName(name) ? name : path;
}

std::string SessionFolder::NameFor(const std::string& path) const {
    const std::string prefix = folder_ == "/" ? folder_ : folder_ + files_.Separator();
    if (!platform::StartsWith(path, prefix)) return path;
    std::string name = path.substr(prefix.size());
    return Resolve(name) == path && name.find(':') == std::string::npos ? name : path;
}

std::string SessionFolder::NameForOutput(const std::string& name) const {
    return Resolve(name) == files_.GetAbsolutePathName(name) ? name
                                                             : files_.GetAbsolutePathName(name);
}

std::string SessionFolder::ReadProfileText(const std::string& name) const {
    return DecodeText(files_.ReadBytes(Resolve(name), kMostProfileBytes));
}

}  // namespace engine::files
