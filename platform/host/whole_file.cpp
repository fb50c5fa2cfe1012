#include "platform/host/whole_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <string_view>

#include "platform/posix/file_descriptor.h"
#include "platform/posix/system_error.h"

namespace platform::host {

namespace {

bool FolderIsMissing(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    struct stat info {};
    return slash != std::string::npos && slash != 0 &&
           ::stat(path.substr(0, slash).c_str(), &info) != 0;
}

Error OpenError(const std::string& action, const std::string& path, int code) {
    if (code == ENOENT && FolderIsMissing(path))
        return {kPathNotFound, action + path + ": its folder does not exist. Check the path."};
    return SystemError(action + path, code);
}

void CheckOrdinary(const std::string& action, const std::string& path, mode_t mode) {
    if (!S_ISREG(mode))
        throw Error(kInvalidArgument, action + path + ": it is no ordinary file. Name a file.");
}

void WriteAll(const FileDescriptor& file, std::string_view bytes, const std::string& path) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(file.Number(), bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw SystemError("Cannot write the file " + path, errno);
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

}  // namespace

std::string ReadWholeFile(const std::string& host_path, std::size_t most) {
    const std::string action = "Cannot read the file ";
    const FileDescriptor file(::open(host_path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!file.IsOpen()) throw OpenError(action, host_path, errno);
    struct stat info {};
    if (::fstat(file.Number(), &info) != 0) throw SystemError(action + host_path, errno);
    CheckOrdinary(action, host_path, info.st_mode);
    std::string bytes;
    std::array<char, 65536> buffer{};
    for (;;) {
        const ssize_t count = ::read(file.Number(), buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw SystemError(action + host_path, errno);
        if (count == 0) return bytes;
        bytes.append(buffer.data(), static_cast<std::size_t>(count));
        if (bytes.size() > most)
            throw Error(kInvalidData, action + host_path + ": it has more than " +
                                          std::to_string(most) +
                                          " bytes, too many for what it should be.");
    }
}

void WriteWholeFile(const std::string& host_path, const std::string& bytes) {
    const std::string action = "Cannot write the file ";
    mode_t mode = 0666;
    struct stat info {};
    const bool exists = ::stat(host_path.c_str(), &info) == 0;
    if (exists) {
        CheckOrdinary(action, host_path, info.st_mode);
        if (::access(host_path.c_str(), W_OK) != 0) throw SystemError(action + host_path, errno);
        mode = info.st_mode & 0777U;
    }
    const std::string beside = host_path + ".part";
    constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    FileDescriptor file(::open(beside.c_str(), kFlags, mode));
    if (!file.IsOpen()) throw OpenError(action, host_path, errno);
    try {
        WriteAll(file, bytes, host_path);
        if (exists && ::fchmod(file.Number(), mode) != 0)
            throw SystemError(action + host_path, errno);
        if (::fsync(file.Number()) != 0) throw SystemError(action + host_path, errno);
        if (::rename(beside.c_str(), host_path.c_str()) != 0)
            throw SystemError(action + host_path, errno);
    } catch (const Error&) {
        ::unlink(beside.c_str());
        throw;
    }
}

}  // namespace platform::host
