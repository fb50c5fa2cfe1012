#include "engine/files/media_subtype.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <charconv>

#include "platform/text.h"

namespace engine::files {

namespace {

constexpr std::string_view kMediaTail = "-0000-0010-8000-00AA00389B71";
constexpr std::string_view kRgbTail = "-524F-11CE-9F53-0020AF0BA770";
constexpr std::uint32_t kRgbCodes = 0xE436EB00;  // their first three bytes

bool IsRgb(std::uint32_t code) { return (code & 0xFFFFFF00U) == kRgbCodes; }

}  // namespace

std::optional<std::uint32_t> SubtypeCode(std::string_view guid) {
    std::string text = platform::UpperCase(platform::TrimBlanks(guid));
    if (text.size() == 38 && text.front() == '{' && text.back() == '}')
        text = text.substr(1, text.size() - 2);
    if (text.size() != 36) return std::nullopt;
    std::uint32_t code = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + 8, code, 16);
    if (stop != text.data() + 8 || error != std::errc()) return std::nullopt;
    const std::string_view tail = std::string_view(text).substr(8);
    if (tail != (IsRgb(code) ? kRgbTail : kMediaTail)) return std::nullopt;
    return code;
}

std::string SubtypeText(std::uint32_t code) {
    return fmt::format("{{{:08X}{}}}", code, IsRgb(code) ? kRgbTail : kMediaTail);
}

std::string CodeName(std::uint32_t code) {
    std::string letters;
    for (unsigned shift = 0; shift < 32; shift += 8)
        letters += static_cast<char>(code >> shift & 0xFFU);
    const bool readable = std::all_of(letters.begin(), letters.end(), [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == ' ';
    });
    return readable ? platform::TrimBlanks(letters) : fmt::format("0x{:X}", code);
}

std::optional<std::uint32_t> CodeOfLetters(std::string_view letters) {
    if (letters.size() > 4) return std::nullopt;
    const std::string padded = platform::PadSpaces(platform::UpperCase(letters), 4);
    std::uint32_t code = 0;
    for (std::size_t i = 4; i-- > 0;) code = code << 8U | static_cast<unsigned char>(padded[i]);
    return code;
}

}  // namespace engine::files
