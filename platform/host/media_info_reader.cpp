#include "platform/host/media_info_reader.h"

#include <MediaInfoDLL/MediaInfoDLL_Static.h>
#include <ZenLib/Ztring.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <charconv>
#include <cstddef>
#include <memory>
#include <utility>

#include "platform/error.h"
#include "platform/posix/file_descriptor.h"
#include "platform/posix/system_error.h"

namespace platform::host {

namespace {

ZenLib::Ztring Wide(const std::string& text) { return ZenLib::Ztring().From_UTF8(text); }
std::string Narrow(const wchar_t* text) { return ZenLib::Ztring(text).To_UTF8(); }

// The library brings two dozen others along, which would cost each start of the program some
// milliseconds; it is loaded when it is first asked about a file and stays loaded.
class Library {
  public:
    Library() : library_(dlopen("libmediainfo.so.0", RTLD_LAZY | RTLD_LOCAL)) {
        Load(make, "MediaInfo_New");
        Load(destroy, "MediaInfo_Delete");
        Load(open, "MediaInfo_Open");
        Load(count, "MediaInfo_Count_Get");
        Load(get, "MediaInfo_Get");
        Load(inform, "MediaInfo_Inform");
    }

    static const Library& Loaded() {
        static const Library library;
        return library;
    }

    decltype(&MediaInfo_New) make = nullptr;
    decltype(&MediaInfo_Delete) destroy = nullptr;
    decltype(&MediaInfo_Open) open = nullptr;
    decltype(&MediaInfo_Count_Get) count = nullptr;
    decltype(&MediaInfo_Get) get = nullptr;
    decltype(&MediaInfo_Inform) inform = nullptr;

  private:
    template <typename Function>
    void Load(Function& function, const char* name) {
        if (library_ != nullptr) function = reinterpret_cast<Function>(dlsym(library_, name));
        if (function == nullptr)
            throw Error(kUnspecified, std::string("Cannot load what describes media files: ") +
                                          dlerror() + ". Install the package of libmediainfo.");
    }

    void* library_;
};

class Reader {
  public:
    Reader() : library_(Library::Loaded()), handle_(library_.make(), library_.destroy) {}

    bool Open(const std::string& path) {
        return library_.open(handle_.get(), Wide(path).c_str()) != 0;
    }

    bool IsMedia() const {
        for (const auto kind : {MediaInfo_Stream_Video, MediaInfo_Stream_Audio,
                                MediaInfo_Stream_Image, MediaInfo_Stream_Text})
            if (library_.count(handle_.get(), kind, kAllStreams) > 0) return true;
        return false;
    }

    std::string FrameRate() const {
        return Narrow(library_.get(handle_.get(), MediaInfo_Stream_Video, 0, L"FrameRate",
                                   MediaInfo_Info_Text, MediaInfo_Info_Name));
    }

    std::string Description() const { return Narrow(library_.inform(handle_.get(), 0)); }

  private:
    static constexpr std::size_t kAllStreams = static_cast<std::size_t>(-1);

    const Library& library_;
    std::unique_ptr<void, decltype(&MediaInfo_Delete)> handle_;
};

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
    if (!info.Open(path_)) return 0;
    const std::string text = info.FrameRate();
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
    if (!info.Open(path_) || !info.IsMedia())
        throw Error(kInvalidData, "Cannot describe the file " + path_ +
                                      ": it holds no picture or sound. Name a media file.");
    return WithLineEnds(info.Description());
}

}  // namespace platform::host
