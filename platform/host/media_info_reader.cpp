#include "platform/host/media_info_reader.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <utility>

#include "platform/error.h"
#include "platform/host/helper_process.h"
#include "platform/posix/file_descriptor.h"
#include "platform/posix/program_file.h"
#include "platform/posix/system_error.h"

namespace platform::host {

namespace {

constexpr HelperLimits kLimits{std::chrono::seconds(30), std::size_t{16} << 20U};

std::string WithLineEnds(const std::string& text) {
    std::string lines;
    for (const char c : text) {
        if (c == '\r') continue;
        if (c == '\n') lines.push_back('\r');
        lines.push_back(c);
    }
    return lines.substr(0, lines.find_last_not_of("\r\n") + 1);
}

HelperOutput Ask(const std::string& path, const std::function<bool()>& stopped) {
    return RunHelper({ProgramFile("tessivo-media-info"), path}, kLimits, stopped);
}

}  // namespace

MediaInfoReader::MediaInfoReader(PathNames names, std::function<bool()> stopped)
    : names_(std::move(names)), stopped_(std::move(stopped)) {}

void MediaInfoReader::SetFileName(const std::string& path) { path_ = names_.AbsolutePath(path); }

double MediaInfoReader::FrameRate() {
    const std::string text = Ask(path_, stopped_).text;
    double rate = 0;
    std::from_chars(text.data(), text.data() + text.size(), rate);
    return rate;
}

std::string MediaInfoReader::Description() {
    const FileDescriptor file(::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.IsOpen()) throw SystemError("Cannot open the file " + path_, errno);
    struct stat status {};
    if (::fstat(file.Number(), &status) != 0 || !S_ISREG(status.st_mode))
        throw Error(kInvalidData,
                    "Cannot describe " + path_ + ": it is no file. Name a media file.");

    HelperOutput about = Ask(path_, stopped_);
    if (about.end == HelperOutput::End::Stopped)
        throw Error(kUnspecified, "Stopped before the file " + path_ + " was described.");
    if (about.end == HelperOutput::End::TooLong || !about.text.ends_with('\0'))
        throw Error(kInvalidData, "Cannot describe the file " + path_ +
                                      ": reading it takes too much time or memory, as damaged "
                                      "files do. Name another one.");
    about.text.pop_back();
    const std::string description = about.text.substr(about.text.find('\n') + 1);
    if (description.empty())
        throw Error(kInvalidData, "Cannot describe the file " + path_ +
                                      ": it holds no picture or sound. Name a media file.");
    return WithLineEnds(description);
}

}  // namespace platform::host
