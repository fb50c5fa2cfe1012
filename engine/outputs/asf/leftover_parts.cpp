#include "engine/outputs/asf/leftover_parts.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include "engine/outputs/asf/free_name.h"
#include "engine/outputs/asf/part_name.h"
#include "platform/posix/file_descriptor.h"

namespace engine {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostNotes = 3;

// An ASF file begins with the GUID of its header object.
constexpr std::array<unsigned char, 16> kBeginning = {
    0x30, 0x26, 0xB2, 0x75, 0x8E, 0x66, 0xCF, 0x11, 0xA6, 0xD9, 0x00, 0xAA, 0x00, 0x62, 0xCE, 0x6C};

// Who writes a part holds its lock, which goes with the process.
bool IsLeftover(const fs::path& path) {
    const platform::FileDescriptor file(
        ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
    struct stat facts {};
    if (::fstat(file.Number(), &facts) != 0 || !S_ISREG(facts.st_mode)) return false;
    if (::flock(file.Number(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK) return false;
    std::array<unsigned char, kBeginning.size()> beginning{};
    return ::read(file.Number(), beginning.data(), beginning.size()) ==
               static_cast<ssize_t>(beginning.size()) &&
           beginning == kBeginning;
}

// By name.
std::vector<std::string> LeftoverParts(const fs::path& folder) {
    std::vector<std::string> parts;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string path = entry->path().string();
        if (!TargetOfPart(path).empty() && IsLeftover(path)) parts.push_back(path);
    }
    std::sort(parts.begin(), parts.end());
    return parts;
}

}  // namespace

std::vector<std::string> LeftoverNotes(const std::string& output_path) {
    const fs::path target = OutputTarget(output_path);
    const fs::path folder = target.parent_path();
    std::vector<std::string> parts = LeftoverParts(folder);
    std::erase(parts, PartName(target));
    std::vector<std::string> notes;
    for (const std::string& part : parts) {
        if (notes.size() == kMostNotes) {
            notes.push_back(fmt::format("There are {} more such parts in \"{}\".",
                                        parts.size() - kMostNotes, folder.string()));
            break;
        }
        notes.push_back(
            fmt::format("\"{0}\" was left by a run that was cut short; tessivo-console --repair "
                        "\"{0}\" makes it whole.",
                        part));
    }
    return notes;
}

void SetLeftoverAside(const std::string& output_path) {
    const fs::path target = OutputTarget(output_path);
    const std::string leftover = PartName(target);
    if (!IsLeftover(leftover)) return;
    std::error_code stays;
    fs::rename(leftover, PartName(FreeNameBeside(target.string())), stays);
}

}  // namespace engine
