#include "platform/posix/system_error.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <iterator>
#include <system_error>

namespace platform {

namespace {

struct KnownError {
    int code;
    ErrorNumber number;
    const char* reason;
    const char* advice;
};

// clang-format off
constexpr KnownError kKnownErrors[] = {
    // code       number                reason                                       advice
    {ENOENT,       kFileNotFound,       "it does not exist",                         "check the name"},
    {ENOTDIR,      kPathNotFound,       "a part of its path is a file, not a folder", "check the path"},
    {ELOOP,        kPathNotFound,       "its links lead in a circle",                "check the path"},
    {ENAMETOOLONG, kInvalidArgument,    "the name is too long",                      "choose a shorter one"},
    {EACCES,       kAccessDenied,       "access is denied",                          "check the permissions"},
    {EPERM,        kAccessDenied,       "access is denied",                          "check the permissions"},
    {EROFS,        kAccessDenied,       "the file system can only be read",          "choose another folder"},
    {EISDIR,       kAccessDenied,       "it is a folder",                            "name a file"},
    {ETXTBSY,      kAccessDenied,       "the program is running",                    "end it first"},
    {EEXIST,       kFileExists,         "it exists already",                         "choose another name"},
    {ENOSPC,       kDiskFull,           "the disk is full",                          "make room or choose another disk"},
    {EDQUOT,       kDiskFull,           "the quota is used up",                      "make room or choose another disk"},
    {EFBIG,        kDiskFull,           "the file would be larger than allowed",     "choose another disk"},
    {EBADF,        kInvalidArgument,    "it is closed",                              "open it first"},
    {EBUSY,        kBusy,               "it is in use",                              "try again when it is free"},
    {ENODEV,       kDeviceNotConnected, "it is not connected",                       "connect it"},
};
// clang-format on

}  // namespace

SystemCause CauseOf(int code) {
    const auto* known = std::find_if(std::begin(kKnownErrors), std::end(kKnownErrors),
                                     [&](const KnownError& error) { return error.code == code; });
    if (known == std::end(kKnownErrors))
        return {kUnspecified, std::generic_category().message(code), ""};
    return {known->number, known->reason, known->advice};
}

Error SystemError(const std::string& action, int code) {
    SystemCause cause = CauseOf(code);
    std::string description = action + ": " + cause.reason + ".";
    if (!cause.advice.empty()) {
        cause.advice.front() = static_cast<char>(std::toupper(cause.advice.front()));
        description += " " + cause.advice + ".";
    }
    return {cause.number, description};
}

}  // namespace platform
