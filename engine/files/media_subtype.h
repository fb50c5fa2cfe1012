// The identifiers by which profile files name media types: GUIDs that a code of 32 bits begins.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace engine::files {

/// The first group of "{XXXXXXXX-...}" where the rest is that of a format tag, of a FourCC or of an
/// RGB format; nothing for others.
std::optional<std::uint32_t> SubtypeCode(std::string_view guid);

/// The identifier that a code begins.
std::string SubtypeText(std::uint32_t code);

/// What the first four characters of a stream's major type say ("auds", "vids", "scmd").
inline constexpr std::uint32_t kAudioType = 0x73647561;
inline constexpr std::uint32_t kVideoType = 0x73646976;
inline constexpr std::uint32_t kScriptType = 0x73636D64;

/// A FourCC of four letters or digits as such, any other code as a number: for people.
std::string CodeName(std::uint32_t code);

/// The code of up to four characters, in upper case; nothing for more.
std::optional<std::uint32_t> CodeOfLetters(std::string_view letters);

}  // namespace engine::files
