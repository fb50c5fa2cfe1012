#include "engine/outputs/asf/input_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "engine/outputs/asf/file_identity.h"
#include "platform/error.h"
#include "platform/posix/system_error.h"

namespace engine::asf {
namespace {

[[noreturn]] void Refuse(platform::ErrorNumber number, const std::string& path,
                         const std::string& reason) {
    throw platform::Error(number, fmt::format("Cannot repair \"{}\": {}", path, reason));
}

// clang-format off
constexpr platform::SystemErrorRow kOfAPart[] = {
    // errno  number                      reason                   advice
    {ELOOP,   platform::kInvalidArgument, "it is a symbolic link", "name the file that it leads to"},
    {ENXIO,   platform::kInvalidArgument, "it is no file",         "name a file"},
};
// clang-format on

[[noreturn]] void RefuseFor(int code, const std::string& path) {
    const platform::SystemCause cause = platform::CauseOf(code, kOfAPart);
    Refuse(cause.number, path, cause.Text());
}

}  // namespace

InputFile::InputFile(std::string path)
    : path_(std::move(path)),
      descriptor_(
          ::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY)) {
    if (!descriptor_.IsOpen()) RefuseFor(errno, path_);
    struct stat state {};
    const bool known = ::fstat(descriptor_.Number(), &state) == 0;
    if (known && S_ISREG(state.st_mode)) {
        bytes_ = static_cast<std::uint64_t>(state.st_size);
        permissions_ = state.st_mode & 0777U;
        return;
    }
    RefuseFor(ENXIO, path_);
}

void InputFile::Lock() const {
    if (::flock(descriptor_.Number(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        Refuse(platform::kBusy, path_, "a run is writing it; wait for its end");
}

void InputFile::Read(std::uint64_t place, std::span<std::uint8_t> bytes) const {
    while (!bytes.empty()) {
        const ::ssize_t count =
            ::pread(descriptor_.Number(), bytes.data(), bytes.size(), static_cast<off_t>(place));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) Refuse(platform::kUnspecified, path_, "the disk cannot read it");
        bytes = bytes.subspan(static_cast<std::size_t>(count));
        place += static_cast<std::uint64_t>(count);
    }
}

bool InputFile::HasName() const { return NameLeadsTo(path_, descriptor_.Number()); }

}  // namespace engine::asf
