// Bytes of a text file in any Unicode encoding, to and from UTF-8.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace engine::files {

// Real ones have some kilobytes.
inline constexpr std::size_t kMostProfileBytes = std::size_t{1} << 20U;
inline constexpr std::size_t kMostSessionBytes = std::size_t{4} << 20U;

/// UTF-8, UTF-16 or UTF-32 in either byte order, with a mark or recognised by where zero bytes
/// stand. The mark and zero characters at the end are left out. Throws Error (invalid data) for
/// what is no text in such an encoding.
std::string DecodeText(std::string_view bytes);

/// UTF-16, low bytes first, with a mark, each line end as CR LF.
std::string EncodeText(std::string_view utf8);

}  // namespace engine::files
