#include "platform/host/media_info_reader.h"

#include <MediaInfo/MediaInfo.h>
#include <ZenLib/Ztring.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <charconv>
#include <utility>

#include "platform/error.h"
#include "platform/host/file_descriptor.h"
#include "platform/host/system_error.h"

namespace platform::host {

namespace {

using Reader = MediaInfoLib::MediaInfo;

ZenLib::Ztring Wide(const std::string& text) { return ZenLib::Ztring().From_UTF8(text); }
std::string Narrow(const MediaInfoLib::String& text) { return ZenLib::Ztring(text).To_UTF8(); }

bool IsMedia(Reader& info) {
    for (const auto kind : {MediaInfoLib::Stream_Video, MediaInfoLib::Stream_Audio,
                            MediaInfoLib::Stream_Image, MediaInfoLib::Stream_Text})
        if (info.Count_Get(kind) > 0) return true;
    return false;
}

std::string WithLineEnds(const std::string& text) {
    std::string lines;
    for (const char c : text) {
        if (c == '\r') continue;
        if (c == '\n') lines.push_back('\r');
        lines.push_back(c);
    }
    return lines.substr(0, lines.find_last_not_of("\r\n") + 1);
}

}  // namespace

MediaInfoReader::MediaInfoReader(PathNames names) : names_(std::move(names)) {}

void MediaInfoReader::SetFileName(const std::string& path) { path_ = names_.AbsolutePath(path); }

double MediaInfoReader::FrameRate() {
    Reader info;
    if (info.Open(Wide(path_)) == 0) return 0;
    const std::string text =
        Narrow(info.Get(MediaInfoLib::Stream_Video, 0, __T("FrameRate"), MediaInfoLib::Info_Text));
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

    Reader info;
    if (info.Open(Wide(path_)) == 0 || !IsMedia(info))
        throw Error(kInvalidData, "Cannot describe the file " + path_ +
                                      ": it holds no picture or sound. Name a media file.");
    return WithLineEnds(Narrow(info.Inform()));
}

}  // namespace platform::host
