#include "engine/media/media_library.h"

#include <dlfcn.h>

#include <string_view>

#include <fmt/format.h>

#include "platform/error.h"
#include "platform/posix/program_file.h"

namespace engine {
namespace {

platform::Error CannotLoad(const std::string& path, std::string_view reason) {
    // The loader names the file that it stumbled on, which may be another that this one needs.
    if (const std::string prefix = path + ": "; reason.starts_with(prefix))
        reason.remove_prefix(prefix.size());
    return {
        platform::kUnspecified,
        fmt::format("Cannot load the media library {}: {}. Install the program again, whole and "
                    "with the packages that it needs.",
                    path, reason)};
}

const MediaParts& Load() {
    const std::string path = platform::ProgramFile("tessivo-media.so");
    void* library = dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
    if (library == nullptr) throw CannotLoad(path, dlerror());
    const auto* parts = static_cast<const MediaParts*>(dlsym(library, kMediaPartsSymbol));
    if (parts == nullptr) throw CannotLoad(path, dlerror());
    if (std::string_view(parts->version) != TESSIVO_VERSION)
        throw CannotLoad(path, fmt::format("it is of version {}, the program of version {}",
                                           parts->version, TESSIVO_VERSION));
    return *parts;
}

}  // namespace

const MediaParts& MediaLibrary() {
    static const MediaParts& parts = Load();
    return parts;
}

}  // namespace engine
