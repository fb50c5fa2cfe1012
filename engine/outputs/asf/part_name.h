// The names of what an output is while it is not whole.
#pragma once

#include <string>
#include <string_view>

namespace engine {

inline constexpr std::string_view kPartSuffix = ".part";

/// `path` with the suffix, in the same folder. A name that would be longer than file systems take
/// (255 bytes) loses the end of its stem for a mark that other long names do not share; the
/// extension stays.
std::string SiblingName(const std::string& path, std::string_view suffix);

/// The name under which an output grows.
inline std::string PartName(const std::string& path) { return SiblingName(path, kPartSuffix); }

/// The name that a part is to have when it is whole; "" when `path` is no part's name.
inline std::string TargetOfPart(const std::string& path) {
    const std::size_t stem = path.size() - kPartSuffix.size();
    const bool is_part =
        path.size() > kPartSuffix.size() && path.ends_with(kPartSuffix) && path[stem - 1] != '/';
    return is_part ? path.substr(0, stem) : std::string();
}

/// The file that an output of this name is: where symbolic links lead, be it there or not.
std::string OutputTarget(const std::string& path);

}  // namespace engine
