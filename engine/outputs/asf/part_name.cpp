#include "engine/outputs/asf/part_name.h"

#include <climits>
#include <cstdint>
#include <filesystem>
#include <system_error>

#include <fmt/format.h>

namespace engine {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestExtension = 16;
constexpr int kMostLinks = 40;  // as the system follows

/// FNV-1a: the same in every run, so that a part is found again.
std::uint32_t Mark(std::string_view name) {
    std::uint32_t hash = 2166136261U;
    for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619U;
    return hash;
}

bool ContinuesCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }

}  // namespace

std::string SiblingName(const std::string& path, std::string_view suffix) {
    const std::size_t begin = path.rfind('/') + 1;  // 0 without a folder
    const std::string name = path.substr(begin);
    if (name.size() + suffix.size() <= NAME_MAX) return path + std::string(suffix);
    std::string extension = fs::path(name).extension().string();
    if (extension.size() > kLongestExtension) extension.clear();
    const std::string tail = fmt::format("~{:08x}{}{}", Mark(name), extension, suffix);
    std::size_t stem = NAME_MAX - tail.size();
    while (stem > 0 && ContinuesCharacter(name[stem])) --stem;
    return path.substr(0, begin + stem) + tail;
}

std::string OutputTarget(const std::string& path) {
    fs::path target = path;
    std::error_code error;
    for (int links = 0; links < kMostLinks && fs::is_symlink(target, error); ++links) {
        const fs::path next = fs::read_symlink(target, error);
        if (error) break;
        target = target.parent_path() / next;  // which is `next` where that is absolute
    }
    return target.string();
}

}  // namespace engine
