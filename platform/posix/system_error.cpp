#include "platform/posix/system_error.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <system_error>

namespace platform {

namespace {

// clang-format off
constexpr SystemErrorRow kEverywhere[] = {
    // code        number               reason                                        advice
    {ENOENT,       kFileNotFound,       "it does not exist",                          "check the name"},
    {ENOTDIR,      kPathNotFound,       "a part of its path is a file, not a folder", "check the path"},
    {ELOOP,        kPathNotFound,       "its links lead in a circle",                 "check the path"},
    {ENAMETOOLONG, kInvalidArgument,    "its name is too long",                       "choose a shorter one"},
    {EACCES,       kAccessDenied,       "access is denied",                           "check the permissions"},
    {EPERM,        kAccessDenied,       "access is denied",                           "check the permissions"},
    {EROFS,        kAccessDenied,       "the disk is read-only",                      "choose another disk"},
    {EISDIR,       kAccessDenied,       "it is a folder",                             "name a file"},
    {ETXTBSY,      kAccessDenied,       "the program is running",                     "end it first"},
    {EEXIST,       kFileExists,         "it exists already",                          "choose another name"},
    {ENOSPC,       kDiskFull,           "the disk is full",                           "make room or choose another disk"},
    {EDQUOT,       kDiskFull,           "the disk quota is used up",                  "make room or choose another disk"},
    {EFBIG,        kDiskFull,           "the disk takes no larger file",              "choose another disk"},
    {EBADF,        kInvalidArgument,    "it is closed",                               "open it first"},
    {EINVAL,       kInvalidArgument,    "a setting is out of range",                  ""},
    {EBUSY,        kBusy,               "it is in use",                               "try again when it is free"},
    {ENODEV,       kDeviceNotConnected, "it is not connected",                        "connect it"},
};
// clang-format on

const SystemErrorRow* Find(int code, std::span<const SystemErrorRow> rows) {
    const auto row = std::ranges::find(rows, code, &SystemErrorRow::code);
    return row == rows.end() ? nullptr : &*row;
}

}  // namespace

std::string SystemCause::Text() const { return advice.empty() ? reason : reason + "; " + advice; }

SystemCause CauseOf(int code, std::span<const SystemErrorRow> here) {
    const SystemErrorRow* row = Find(code, here);
    if (row == nullptr) row = Find(code, kEverywhere);
    if (row == nullptr) return {kUnspecified, std::generic_category().message(code), ""};
    return {row->number, row->reason, row->advice};
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
