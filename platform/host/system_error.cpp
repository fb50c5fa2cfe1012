#include "platform/host/system_error.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <system_error>

namespace platform::host {

namespace {

struct KnownError {
    int code;
    ErrorNumber number;
    const char* text;
};

// clang-format off
constexpr KnownError kKnownErrors[] = {
    // code       number            reason and advice
    {ENOENT,       kFileNotFound,    "it does not exist. Check the name."},
    {ENOTDIR,      kPathNotFound,    "a part of its path is a file, not a folder. Check the path."},
    {ELOOP,        kPathNotFound,    "its links lead in a circle. Check the path."},
    {ENAMETOOLONG, kInvalidArgument, "the name is too long. Choose a shorter one."},
    {EACCES,       kAccessDenied,    "access is denied. Check the permissions."},
    {EPERM,        kAccessDenied,    "access is denied. Check the permissions."},
    {EROFS,        kAccessDenied,    "the file system can only be read. Choose another folder."},
    {EISDIR,       kAccessDenied,    "it is a folder. Name a file."},
    {ETXTBSY,      kAccessDenied,    "the program is running. End it first."},
    {EEXIST,       kFileExists,      "it exists already. Choose another name."},
    {ENOSPC,       kDiskFull,        "the disk is full. Make room or choose another disk."},
    {EDQUOT,       kDiskFull,        "the quota is used up. Make room or choose another disk."},
    {EFBIG,        kDiskFull,        "the file would be larger than allowed. Choose another disk."},
    {EBADF,        kInvalidArgument, "it is closed. Open it first."},
    {EBUSY,        kBusy,            "it is in use. Try again when it is free."},
};
// clang-format on

}  // namespace

Error SystemError(const std::string& action, int code) {
    const auto* known = std::find_if(std::begin(kKnownErrors), std::end(kKnownErrors),
                                     [&](const KnownError& error) { return error.code == code; });
    if (known != std::end(kKnownErrors)) return {known->number, action + ": " + known->text};
    return {kUnspecified, action + ": " + std::generic_category().message(code) + "."};
}

}  // namespace platform::host
