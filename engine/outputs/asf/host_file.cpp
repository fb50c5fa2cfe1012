#include "engine/outputs/asf/host_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
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
    // errno        number                      what is said
    {ENOSPC,        platform::kDiskFull,        "the disk is full; make room or choose another disk"},
    {EFBIG,         platform::kDiskFull,        "the disk takes no larger file; choose another disk"},
    {EDQUOT,        platform::kDiskFull,        "the disk quota is used up; make room or choose another disk"},
    {ENOENT,        platform::kPathNotFound,    "its folder does not exist; make the folder or choose another"},
    {ENOTDIR,       platform::kPathNotFound,    "its folder is no folder; choose another"},
    {ENAMETOOLONG,  platform::kInvalidArgument, "its name is too long; choose a shorter one"},
    {EACCES,        platform::kAccessDenied,    "access is denied; choose a place that may be written to"},
    {EPERM,         platform::kAccessDenied,    "access is denied; choose a place that may be written to"},
    {EROFS,         platform::kAccessDenied,    "the disk is read-only; choose another disk"},
    {EISDIR,        platform::kAccessDenied,    "a folder has this name; choose another name"},
    {EWOULDBLOCK,   platform::kBusy,            "another run is writing it; wait for its end or choose another name"},
};
// clang-format on

}  // namespace

void FailToWrite(const std::string& called, int cause) {
    for (const CauseRow& row : kCauses)
        if (row.cause == cause)
            throw platform::Error(row.number,
                                  fmt::format("Cannot write \"{}\": {}", called, row.what));
    throw platform::Error(
        platform::kUnspecified,
        fmt::format("Cannot write \"{}\": {}", called, std::generic_category().message(cause)));
}

HostFile::HostFile(std::string path, std::string called)
    : path_(std::move(path)), called_(std::move(called)) {
    while (!Open()) {
    }
    // A packet is in the system's hands when it is written, so a killed process does not lose it.
    if (std::setvbuf(file_.get(), nullptr, _IONBF, 0) != 0) FailToWrite(called_, errno);
}

// False: the file was renamed between opening and locking it, so the name leads elsewhere now.
bool HostFile::Open() {
    constexpr mode_t all_may_that_the_user_allows = 0666;
    const int descriptor =
        ::open(path_.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, all_may_that_the_user_allows);
    if (descriptor < 0) FailToWrite(called_, errno);
    file_.reset(::fdopen(descriptor, "wb"));
    if (!file_) {
        const int cause = errno;
        ::close(descriptor);
        FailToWrite(called_, cause);
    }
    struct stat opened {};
    struct stat named {};
    if (::fstat(descriptor, &opened) != 0) FailToWrite(called_, errno);
    if (!S_ISREG(opened.st_mode)) return true;
    // A file system without locks does not keep anybody from writing.
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        FailToWrite(called_, EWOULDBLOCK);
    if (::stat(path_.c_str(), &named) != 0 || named.st_ino != opened.st_ino) return false;
    if (::ftruncate(descriptor, 0) != 0) FailToWrite(called_, errno);
    return true;
}

void HostFile::Append(std::span<const std::uint8_t> bytes) {
    if (bytes.empty()) return;
    if (std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size())
        FailToWrite(called_, errno);
}

void HostFile::Overwrite(std::span<const std::uint8_t> bytes) {
    if (std::fseek(file_.get(), 0, SEEK_SET) != 0) FailToWrite(called_, errno);
    Append(bytes);
    if (std::fseek(file_.get(), 0, SEEK_END) != 0) FailToWrite(called_, errno);
}

void HostFile::CutTo(std::uint64_t bytes) {
    if (::ftruncate(::fileno(file_.get()), static_cast<off_t>(bytes)) != 0)
        FailToWrite(called_, errno);
    if (std::fseek(file_.get(), 0, SEEK_END) != 0) FailToWrite(called_, errno);
}

void HostFile::Sync() {
    const bool cannot_be_synced = ::fsync(::fileno(file_.get())) != 0;
    if (cannot_be_synced && errno != EINVAL && errno != ENOTSUP) FailToWrite(called_, errno);
}

bool HostFile::HasName() const {
    struct stat state {};
    return ::fstat(::fileno(file_.get()), &state) == 0 && state.st_nlink > 0;
}

void HostFile::Rename(const std::string& path) {
    if (::rename(path_.c_str(), path.c_str()) != 0) FailToWrite(called_, errno);
    path_ = path;
}

}  // namespace engine::asf
