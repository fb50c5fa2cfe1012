// The program tessivo-media-info FILE: what libmediainfo makes of a file, for the program that
// starts it. A few damaged bytes make the library take any memory and time and heed no signal, so
// it runs in a process of its own with limits.
//
// Output: the first video stream's frame rate, a line end, the description, a zero byte. The rate
// is empty where it is not known, the description where the file is no media; output without the
// zero byte is not whole.
#include <MediaInfo/MediaInfo.h>
#include <ZenLib/Ztring.h>
#include <sys/prctl.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <string>

#include "platform/host/locale_text.h"

namespace {

using MediaInfoLib::MediaInfo;

// Whole files take some 40 MiB and a tenth of a second.
constexpr rlim_t kMostMemory = rlim_t{512} << 20U;
constexpr rlim_t kMostSeconds = 5;  // of processor time

bool Limit(decltype(RLIMIT_AS) resource, rlim_t most) {
    rlimit limit{};
    if (::getrlimit(resource, &limit) != 0) return false;
    limit.rlim_cur = limit.rlim_max = std::min(limit.rlim_max, most);
    return ::setrlimit(resource, &limit) == 0;
}

std::string Narrow(const MediaInfoLib::String& text) { return ZenLib::Ztring(text).To_UTF8(); }

bool IsMedia(MediaInfo& info) {
    const auto kinds = {MediaInfoLib::Stream_Video, MediaInfoLib::Stream_Audio,
                        MediaInfoLib::Stream_Image, MediaInfoLib::Stream_Text};
    return std::any_of(kinds.begin(), kinds.end(),
                       [&](MediaInfoLib::stream_t kind) { return info.Count_Get(kind) > 0; });
}

bool Write(const std::string& text) {
    return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() &&
           std::fflush(stdout) == 0;
}

bool Describe(const char* path) {
    MediaInfo info;
    const bool is_open = info.Open(ZenLib::Ztring().From_UTF8(path)) == 1;
    const bool is_media = is_open && IsMedia(info);
    const std::string rate = Narrow(info.Get(MediaInfoLib::Stream_Video, 0, __T("FrameRate")));
    return Write(rate + '\n') && Write((is_media ? Narrow(info.Inform()) : "") + '\0');
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return EXIT_FAILURE;
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (!Limit(RLIMIT_CORE, 0) || !Limit(RLIMIT_AS, kMostMemory) ||
        !Limit(RLIMIT_CPU, kMostSeconds))
        return EXIT_FAILURE;
    // The library catches what is thrown for want of memory, and goes on with half of the file.
    std::set_new_handler([] { std::_Exit(EXIT_FAILURE); });
    try {
        platform::host::UseLocale();
        return Describe(argv[1]) ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (const std::exception&) {
        return EXIT_FAILURE;
    }
}
