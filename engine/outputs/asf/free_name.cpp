#include "engine/outputs/asf/free_name.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "engine/outputs/asf/host_file.h"
#include "engine/outputs/asf/part_name.h"

namespace engine {
namespace {

namespace fs = std::filesystem;

bool IsTaken(const std::string& path) {
    std::error_code none;
    return fs::exists(fs::symlink_status(path, none));
}

}  // namespace

std::string FreeNameBeside(const std::string& path) {
    const std::string extension = fs::path(path).extension().string();
    const std::string stem = path.substr(0, path.size() - extension.size());
    for (int number = 1;; ++number) {
        std::string name = SiblingName(stem, "-" + std::to_string(number) + extension);
        if (!IsTaken(name) && !IsTaken(PartName(name))) return name;
    }
}

namespace asf {

bool RenameUnlessTaken(const std::string& from, const std::string& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return true;
    if (errno == EEXIST) return false;
    const bool unknown = errno == EINVAL || errno == ENOSYS;  // to this file system
    if (!unknown) FailToWrite(to, errno);
    if (IsTaken(to)) return false;
    if (::rename(from.c_str(), to.c_str()) != 0) FailToWrite(to, errno);
    return true;
}

std::string SetAside(const std::string& path) {
    for (;;) {
        std::string name = FreeNameBeside(path);
        if (!IsTaken(path)) return {};
        if (RenameUnlessTaken(path, name)) return name;
    }
}

}  // namespace asf
}  // namespace engine
