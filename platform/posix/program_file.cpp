#include "platform/posix/program_file.h"

#include <filesystem>
#include <system_error>

namespace platform {

std::string ProgramFile(const char* name) {
    constexpr const char* kInstalledFolder = "../lib/tessivo";
    std::error_code unreadable;  // then nothing exists, and who opens the file says so
    const auto folder = std::filesystem::read_symlink("/proc/self/exe", unreadable).parent_path();
    const auto beside = folder / name;
    const auto installed = (folder / kInstalledFolder / name).lexically_normal();
    const bool is_installed = !std::filesystem::exists(beside, unreadable) &&
                              std::filesystem::exists(installed, unreadable);
    return is_installed ? installed : beside;
}

}  // namespace platform
