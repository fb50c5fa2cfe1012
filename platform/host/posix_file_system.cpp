#include "platform/host/posix_file_system.h"

#include <dirent.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <optional>
#include <utility>

#include "platform/host/text_stream.h"
#include "platform/host/whole_file.h"
#include "platform/posix/system_error.h"
#include "platform/text.h"

namespace platform::host {

namespace {

std::optional<struct stat> Inspect(const std::string& path) {
    struct stat info {};
    if (path.empty() || ::stat(path.c_str(), &info) != 0) return std::nullopt;
    return info;
}

std::string LastComponent(const std::string& path) { return path.substr(path.rfind('/') + 1); }

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};
struct FreeText {
    void operator()(char* text) const { std::free(text); }
};

std::string RealPath(const std::string& path) {
    const std::unique_ptr<char, FreeText> real(::realpath(path.c_str(), nullptr));
    return real ? real.get() : path;
}

bool LinksToHolder(const std::string& path, const std::string& folder) {
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) return false;
    const std::string target = RealPath(path);
    return target == "/" || StartsWith(RealPath(folder) + "/", target + "/");
}

}  // namespace

PosixFileSystem::PosixFileSystem(PathNames names, LocaleText encoding)
    : names_(std::move(names)), encoding_(std::move(encoding)) {}

std::string PosixFileSystem::Separator() const { return "/"; }

std::string PosixFileSystem::GetAbsolutePathName(const std::string& path) {
    return names_.AbsolutePath(path);
}

std::string PosixFileSystem::NameOf(const std::string& path) {
    if (path.find('\\') == std::string::npos || !StartsWith(path, "/")) return path;
    std::string uri = "file://";
    for (const char c : path) {
        if (c == '\\')
            uri += "%5C";
        else if (c == '%')
            uri += "%25";
        else
            uri += c;
    }
    return uri;
}

std::string PosixFileSystem::GetParentFolderName(const std::string& path) {
    const std::string name = names_.HostName(path);
    const std::size_t slash = name.rfind('/');
    if (slash == std::string::npos || name == "/") return {};
    return slash == 0 ? "/" : name.substr(0, slash);
}

std::string PosixFileSystem::GetBaseName(const std::string& path) {
    const std::string last = LastComponent(names_.HostName(path));
    return last == "." || last == ".." ? last : last.substr(0, last.rfind('.'));
}

std::string PosixFileSystem::GetExtensionName(const std::string& path) {
    const std::string last = LastComponent(names_.HostName(path));
    const std::size_t dot = last.rfind('.');
    return dot == std::string::npos ? std::string() : last.substr(dot + 1);
}

bool PosixFileSystem::FolderExists(const std::string& path) {
    const auto info = Inspect(names_.HostName(path));
    return info && S_ISDIR(info->st_mode);
}

bool PosixFileSystem::FileExists(const std::string& path) {
    const auto info = Inspect(names_.HostName(path));
    return info && !S_ISDIR(info->st_mode);
}

void PosixFileSystem::CreateFolder(const std::string& path) {
    const std::string host_path = GetAbsolutePathName(path);
    if (::mkdir(host_path.c_str(), 0777) == 0) return;
    const int code = errno;
    if (code == ENOENT)
        throw Error(kPathNotFound, "Cannot create the folder " + host_path +
                                       ": the folder above it does not exist. Create that first.");
    throw SystemError("Cannot create the folder " + host_path, code);
}

Folder PosixFileSystem::GetFolder(const std::string& path) {
    Folder folder;
    folder.path = GetAbsolutePathName(path);
    const std::unique_ptr<DIR, CloseFolder> open(::opendir(folder.path.c_str()));
    if (!open) {
        const int code = errno;
        const Error error = SystemError("Cannot list the folder " + folder.path, code);
        if (code != ENOENT) throw error;
        throw Error(kPathNotFound, error.description());
    }
    const std::string prefix = folder.path == "/" ? folder.path : folder.path + "/";
    while (const dirent* entry = ::readdir(open.get())) {
        const std::string name = entry->d_name;
        if (name == "." || name == "..") continue;
        const auto info = Inspect(prefix + name);
        if (!info || !S_ISDIR(info->st_mode)) {
            folder.files.push_back(name);
        } else if (!LinksToHolder(prefix + name, folder.path)) {
            folder.sub_folders.push_back(name);
        }
    }
    return folder;
}

std::optional<FileIdentity> PosixFileSystem::Identify(const std::string& path) {
    const auto info = Inspect(names_.HostName(path));
    if (!info) return std::nullopt;
    return FileIdentity{info->st_dev, info->st_ino};
}

bool PosixFileSystem::IsSpecialFile(const std::string& path) {
    const auto info = Inspect(names_.HostName(path));
    return info && !S_ISREG(info->st_mode) && !S_ISDIR(info->st_mode);
}

std::shared_ptr<TextStream> PosixFileSystem::OpenTextFile(const std::string& path, OpenMode mode,
                                                          bool create) {
    return OpenText(GetAbsolutePathName(path), mode, create, encoding_);
}

std::string PosixFileSystem::ReadBytes(const std::string& path, std::size_t most) {
    return ReadWholeFile(GetAbsolutePathName(path), most);
}

void PosixFileSystem::WriteBytes(const std::string& path, const std::string& bytes) {
    WriteWholeFile(RealPath(GetAbsolutePathName(path)), bytes);
}

SpecialFolder PosixFileSystem::GetSpecialFolder(SpecialFolderKind kind) {
    switch (kind) {
        case SpecialFolderKind::Windows:
            return {"C:", "Windows"};
        case SpecialFolderKind::System:
            return {"C:", "Windows\\System32"};
        case SpecialFolderKind::Temporary:
            break;
    }
    const char* folder = std::getenv("TMPDIR");
    return {"", std::string(folder != nullptr && *folder == '/' ? folder + 1 : "tmp")};
}

std::shared_ptr<FileSystem> MakeFileSystem() {
    return std::make_shared<PosixFileSystem>(PathNames::OfUser(), LocaleText::OfUser());
}

}  // namespace platform::host
