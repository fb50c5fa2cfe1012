// The name under which an output grows until it is whole.
#pragma once

#include <string>
#include <string_view>

namespace engine {

inline constexpr std::string_view kPartSuffix = ".part";

inline std::string PartName(const std::string& path) { return path + std::string(kPartSuffix); }

/// The name that a part is to have when it is whole; "" when `path` is no part's name.
inline std::string TargetOfPart(const std::string& path) {
    const std::size_t stem = path.size() - kPartSuffix.size();
    const bool is_part =
        path.size() > kPartSuffix.size() && path.ends_with(kPartSuffix) && path[stem - 1] != '/';
    return is_part ? path.substr(0, stem) : std::string();
}

}  // namespace engine
