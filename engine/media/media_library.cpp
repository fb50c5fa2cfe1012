#include "engine/media/media_library.h"

#include <dlfcn.h>

#include <filesystem>
#include <string_view>
#include <system_error>

#include <fmt/format.h>

#include "platform/error.h"

namespace engine {
namespace {

constexpr const char* kFileName = "tessivo-media.so";
constexpr const char* kInstalledFolder = "../lib/tessivo";  // seen from the executable

std::filesystem::path LibraryPath() {
    std::error_code unreadable;  // then nothing exists, and the error below says what was sought
    const auto folder = std::filesystem::read_symlink("/proc/self/exe", unreadable).parent_path();
    const auto beside = folder / kFileName;
    const auto installed = (folder / kInstalledFolder / kFileName).lexically_normal();
    const bool is_installed = !std::filesystem::exists(beside, unreadable) &&
                              std::filesystem::exists(installed, unreadable);
    return is_installed ? installed : beside;
}

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
    const std::string path = LibraryPath().string();
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
