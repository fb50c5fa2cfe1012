#include "engine/base/av/av_error.h"

#include <fmt/format.h>

#include <array>
#include <cerrno>

#include "engine/base/av/av_ptr.h"

namespace engine {
namespace {

struct ErrorRow {
    int code;
    platform::ErrorNumber number;
    const char* text;
};

// clang-format off
constexpr ErrorRow kErrors[] = {
    // FFmpeg's code               number                      what it says
    {AVERROR(ENOENT),              platform::kFileNotFound,    "the file was not found"},
    {AVERROR(ENOTDIR),             platform::kPathNotFound,    "the path was not found"},
    {AVERROR(EACCES),              platform::kAccessDenied,    "access was denied"},
    {AVERROR(EPERM),               platform::kAccessDenied,    "access was denied"},
    {AVERROR(EISDIR),              platform::kAccessDenied,    "it is a folder; name a file"},
    {AVERROR(ENOSPC),              platform::kDiskFull,        "the disk is full"},
    {AVERROR(EDQUOT),              platform::kDiskFull,        "the disk quota is used up"},
    {AVERROR_INVALIDDATA,          platform::kInvalidData,     "the data cannot be read; the file is damaged or of an unknown kind"},
    {AVERROR_EOF,                  platform::kInvalidData,     "the file ends too early"},
    {AVERROR_DECODER_NOT_FOUND,    platform::kInvalidData,     "there is no decoder for it"},
    {AVERROR_ENCODER_NOT_FOUND,    platform::kNotImplemented,  "there is no such encoder in the installed FFmpeg"},
    {AVERROR(EINVAL),              platform::kInvalidArgument, "a setting is out of range"},
    {AVERROR(EBUSY),               platform::kBusy,            "it is in use"},
};
// clang-format on

}  // namespace

platform::Error AvError(int code, const std::string& subject) {
    for (const ErrorRow& row : kErrors) {
        if (row.code == code) return {row.number, fmt::format("{}: {}", subject, row.text)};
    }
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(code, text.data(), text.size());
    return {platform::kUnspecified, fmt::format("{}: {}", subject, text.data())};
}

int CheckAv(int code, const std::string& subject) {
    if (code < 0) throw AvError(code, subject);
    return code;
}

}  // namespace engine
