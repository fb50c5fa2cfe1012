#include "engine/outputs/asf/host_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <utility>

#include "engine/outputs/asf/byte_reader.h"
#include "engine/outputs/asf/file_identity.h"
#include "engine/outputs/asf/free_name.h"
#include "engine/outputs/asf/guids.h"
#include "platform/error.h"
#include "platform/posix/system_error.h"

namespace engine::asf {
namespace {

constexpr const char* kChooseWritable = "choose a place that may be written to";

// clang-format off
constexpr platform::SystemErrorRow kOfAnOutput[] = {
    // errno      number                      reason                                                     advice
    {ENOENT,      platform::kPathNotFound,    "its folder does not exist",                               "make the folder or choose another"},
    {ENOTDIR,     platform::kPathNotFound,    "its folder is no folder",                                 "choose another"},
    {EACCES,      platform::kAccessDenied,    "access is denied",                                        kChooseWritable},
    {EPERM,       platform::kAccessDenied,    "access is denied",                                        kChooseWritable},
    {EISDIR,      platform::kAccessDenied,    "a folder has this name",                                  "choose another name"},
    {ENXIO,       platform::kInvalidArgument, "a FIFO or a socket has this name, and its begin is written last", "choose a file"},
    {EWOULDBLOCK, platform::kBusy,            "another run is writing it",                               "wait for its end or choose another name"},
};
// clang-format on

}  // namespace

void FailToWrite(const std::string& called, int cause) {
    const platform::SystemCause known = platform::CauseOf(cause, kOfAnOutput);
    throw platform::Error(known.number,
                          fmt::format("Cannot write \"{}\": {}", called, known.Text()));
}

HostFile::HostFile(std::string path, std::string called, Before before)
    : path_(std::move(path)), called_(std::move(called)) {
    while (!Open(before)) {
    }
    // A packet is in the system's hands when it is written, so a killed process does not lose it.
    if (std::setvbuf(file_.get(), nullptr, _IONBF, 0) != 0) FailToWrite(called_, errno);
}

// False: the file was renamed between opening and locking it, so the name leads elsewhere now.
bool HostFile::Open(Before before) {
    constexpr mode_t all_may_that_the_user_allows = 0666;
    // The first bytes of a part are read, and a FIFO that is opened for both never waits.
    const int purpose = before == Before::Device ? O_WRONLY : O_RDWR | O_CREAT | O_NOFOLLOW;
    const int anew = before == Before::Nothing ? O_EXCL : 0;
    const int descriptor = ::open(path_.c_str(), purpose | anew | O_CLOEXEC | O_NONBLOCK | O_NOCTTY,
                                  all_may_that_the_user_allows);
    if (descriptor < 0 && errno == ELOOP && before != Before::Device)
        RefuseForeign("is a symbolic link");
    if (descriptor < 0) FailToWrite(called_, errno);
    file_.reset(::fdopen(descriptor, "wb"));
    if (!file_) {
        const int cause = errno;
        ::close(descriptor);
        FailToWrite(called_, cause);
    }
    struct stat opened {};
    if (::fstat(descriptor, &opened) != 0) FailToWrite(called_, errno);
    if (before == Before::Device) {
        if (S_ISFIFO(opened.st_mode) || S_ISSOCK(opened.st_mode)) FailToWrite(called_, ENXIO);
        if (::fcntl(descriptor, F_SETFL, 0) != 0) FailToWrite(called_, errno);  // writes may wait
        return true;
    }
    if (!S_ISREG(opened.st_mode)) RefuseForeign("is no file");
    // A file system without locks does not keep anybody from writing.
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        FailToWrite(called_, EWOULDBLOCK);
    if (!HasName()) return false;
    if (opened.st_size > 0) RequirePart(descriptor);
    if (::ftruncate(descriptor, 0) != 0) FailToWrite(called_, errno);
    return true;
}

void HostFile::RefuseForeign(const char* what) const {
    throw platform::Error(
        platform::kFileExists,
        fmt::format("Cannot write \"{}\": \"{}\", as which it grows, {}; move that away or choose "
                    "another name",
                    called_, path_, what));
}

void HostFile::RequirePart(int descriptor) const {
    std::array<std::uint8_t, 16> begin{};
    const bool read =
        ::pread(descriptor, begin.data(), begin.size(), 0) == static_cast<::ssize_t>(begin.size());
    if (!read || ByteReader(begin).Id() != guid::kHeader)
        RefuseForeign("is no part of a Windows Media file");
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

bool HostFile::HasName() const { return NameLeadsTo(path_, ::fileno(file_.get())); }

void HostFile::RequireName() const {
    if (HasName()) return;
    std::error_code none;
    const bool folder = std::filesystem::exists(std::filesystem::path(path_).parent_path(), none);
    if (!folder)
        throw platform::Error(
            platform::kPathNotFound,
            fmt::format("Cannot write \"{}\": its folder was removed while the file was written; "
                        "make the folder or choose another, and start again",
                        called_));
    throw platform::Error(
        platform::kFileNotFound,
        fmt::format("Cannot write \"{}\": \"{}\", as which it grows, was removed or replaced "
                    "while it was written; start again",
                    called_, path_));
}

void HostFile::Rename(const std::string& path) {
    RequireName();
    if (::rename(path_.c_str(), path.c_str()) != 0) FailToWrite(called_, errno);
    path_ = path;
}

bool HostFile::RenameToFree(const std::string& path) {
    RequireName();
    if (!RenameUnlessTaken(path_, path)) return false;
    path_ = path;
    return true;
}

void HostFile::SetPermissions(unsigned mode) {
    if (::fchmod(::fileno(file_.get()), mode) != 0) FailToWrite(called_, errno);
}

}  // namespace engine::asf
