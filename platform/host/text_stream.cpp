#include "platform/host/text_stream.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <utility>

#include "platform/posix/file_descriptor.h"
#include "platform/posix/system_error.h"
#include "platform/text.h"

namespace platform::host {

namespace {

constexpr std::size_t kLongestLine = std::size_t{1} << 20U;
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

class FileStream : public TextStream {
  public:
    FileStream(std::string path, FileDescriptor file, const LocaleText& encoding)
        : path_(std::move(path)), file_(std::move(file)), encoding_(encoding) {}

    std::string ReadLine() override {
        std::size_t end = ahead_.find('\n');
        while (end == std::string::npos && ReadMore()) end = ahead_.find('\n');
        if (ahead_.empty())
            throw Error(kInvalidData,
                        "The file " + path_ + " has no further line. Check its text.");
        std::string line = ahead_.substr(0, end);
        ahead_.erase(0, end == std::string::npos ? end : end + 1);
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (std::exchange(at_start_, false) && StartsWith(line, kUtf8Mark))
            return line.substr(kUtf8Mark.size());
        return encoding_.ToUtf8(line);
    }

    void Write(const std::string& text) override {
        const std::string bytes = encoding_.FromUtf8(text);
        std::size_t written = 0;
        while (written < bytes.size()) {
            const ssize_t count =
                ::write(file_.Number(), bytes.data() + written, bytes.size() - written);
            if (count >= 0) {
                written += static_cast<std::size_t>(count);
            } else if (errno != EINTR) {
                throw SystemError("Cannot write the file " + path_, errno);
            }
        }
    }

    void Close() override { file_ = FileDescriptor(); }

  private:
    bool ReadMore() {
        if (ahead_.size() > kLongestLine)
            throw Error(kInvalidData, "The file " + path_ +
                                          " has a line without end: it is no text. Name a "
                                          "text file.");
        std::array<char, 4096> buffer{};
        ssize_t count = 0;
        do {
            count = ::read(file_.Number(), buffer.data(), buffer.size());
        } while (count < 0 && errno == EINTR);
        if (count < 0) throw SystemError("Cannot read the file " + path_, errno);
        ahead_.append(buffer.data(), static_cast<std::size_t>(count));
        return count > 0;
    }

    std::string path_;
    FileDescriptor file_;
    LocaleText encoding_;
    std::string ahead_;  // read, not yet handed out
    bool at_start_ = true;
};

bool ParentExists(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos || slash == 0) return true;
    struct stat info {};
    return ::stat(path.substr(0, slash).c_str(), &info) == 0;
}

/// A socket cannot be opened at all, a pipe that nobody reads not for writing.
bool IsPipeOrSocket(const FileDescriptor& file, int open_error) {
    if (!file.IsOpen()) return open_error == ENXIO;
    struct stat info {};
    return ::fstat(file.Number(), &info) == 0 && (S_ISFIFO(info.st_mode) || S_ISSOCK(info.st_mode));
}

}  // namespace

std::shared_ptr<TextStream> OpenText(const std::string& path, OpenMode mode, bool create,
                                     const LocaleText& encoding) {
    const int access = mode == OpenMode::Reading ? O_RDONLY : O_WRONLY | O_TRUNC;
    const int flags = access | (create ? O_CREAT : 0) | O_NONBLOCK | O_CLOEXEC;
    FileDescriptor file(::open(path.c_str(), flags, 0666));
    const int code = errno;
    if (IsPipeOrSocket(file, code))
        throw Error(kInvalidArgument,
                    "Cannot open " + path + ": it is a pipe or a socket. Name a text file.");
    if (!file.IsOpen()) {
        if (code == ENOENT && !ParentExists(path))
            throw Error(kPathNotFound, "Cannot open the file " + path +
                                           ": its folder does not exist. Check the path.");
        throw SystemError("Cannot open the file " + path, code);
    }
    return std::make_shared<FileStream>(path, std::move(file), encoding);
}

}  // namespace platform::host
