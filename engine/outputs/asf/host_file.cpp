#include "engine/outputs/asf/host_file.h"

#include <fmt/format.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/error.h"

namespace engine::asf {
namespace {

struct CauseRow {
    int cause;
    platform::ErrorNumber number;
    const char* what;
};

// clang-format off
constexpr CauseRow kCauses[] = {
    // errno        number                    what is said
    {ENOSPC,        platform::kDiskFull,      "the disk is full; make room or choose another disk"},
    {EFBIG,         platform::kDiskFull,      "the disk takes no larger file; choose another disk"},
#ifdef EDQUOT
    {EDQUOT,        platform::kDiskFull,      "the disk quota is used up; make room or choose another disk"},
#endif
    {ENOENT,        platform::kPathNotFound,  "its folder does not exist; make the folder or choose another"},
    {ENOTDIR,       platform::kPathNotFound,  "its folder is no folder; choose another"},
    {EACCES,        platform::kAccessDenied,  "access is denied; choose a place that may be written to"},
    {EPERM,         platform::kAccessDenied,  "access is denied; choose a place that may be written to"},
    {EROFS,         platform::kAccessDenied,  "the disk is read-only; choose another disk"},
    {EISDIR,        platform::kAccessDenied,  "a folder has this name; choose another name"},
};
// clang-format on

}  // namespace

HostFile::HostFile(std::string path)
    : path_(std::move(path)), file_(std::fopen(path_.c_str(), "wb")) {
    if (!file_) Fail(errno);
    // A packet is in the system's hands when it is written, so a killed process does not lose it.
    if (std::setvbuf(file_.get(), nullptr, _IONBF, 0) != 0) Fail(errno);
}

void HostFile::Append(std::span<const std::uint8_t> bytes) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size()) Fail(errno);
}

void HostFile::Overwrite(std::span<const std::uint8_t> bytes) {
    if (std::fseek(file_.get(), 0, SEEK_SET) != 0) Fail(errno);
    Append(bytes);
    if (std::fseek(file_.get(), 0, SEEK_END) != 0) Fail(errno);
}

void HostFile::CutTo(std::uint64_t bytes) {
    std::error_code error;
    std::filesystem::resize_file(path_, bytes, error);
    if (error) Fail(error.default_error_condition().value());
    if (std::fseek(file_.get(), 0, SEEK_END) != 0) Fail(errno);
}

void HostFile::Close() {
    // Some file systems report a full disk only here.
    if (std::fclose(file_.release()) != 0) Fail(errno);
}

void HostFile::Fail(int cause) const {
    for (const CauseRow& row : kCauses)
        if (row.cause == cause)
            throw platform::Error(row.number,
                                  fmt::format("Cannot write \"{}\": {}", path_, row.what));
    throw platform::Error(
        platform::kUnspecified,
        fmt::format("Cannot write \"{}\": {}", path_, std::generic_category().message(cause)));
}

}  // namespace engine::asf
