#include "engine/files/file_text.h"

#include <cstdint>
#include <optional>
#include <pugixml.hpp>

#include "platform/error.h"

namespace engine::files {

namespace {

static_assert(sizeof(wchar_t) == 4, "a wide character is a code point");

constexpr wchar_t kMark = 0xFEFF;
constexpr wchar_t kFirstSurrogate = 0xD800;
constexpr wchar_t kSecondSurrogate = 0xDC00;
constexpr wchar_t kPastSurrogates = 0xE000;
constexpr wchar_t kPastUnits = 0x10000;
constexpr wchar_t kPastCharacters = 0x110000;

struct Encoding {
    std::size_t unit;  // bytes
    bool high_first;
};

[[noreturn]] void Refuse(const char* reason) {
    throw platform::Error(platform::kInvalidData, reason);
}

/// By the mark, or by the zeroes beside a first character below 256.
Encoding EncodingOf(std::string_view bytes) {
    const auto at = [&](std::size_t i) {
        return i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0x100U;
    };
    if (at(0) == 0xFE && at(1) == 0xFF) return {2, true};
    if (at(0) == 0xFF && at(1) == 0xFE) return {at(2) == 0 && at(3) == 0 ? 4U : 2U, false};
    if (at(0) == 0 && at(1) == 0) return {4, true};
    if (at(0) == 0) return {2, true};
    if (at(1) == 0) return {at(2) == 0 && at(3) == 0 ? 4U : 2U, false};
    return {1, false};
}

std::wstring Units(std::string_view bytes, const Encoding& encoding) {
    if (bytes.size() % encoding.unit != 0) Refuse("its text ends within a character");
    std::wstring units;
    units.reserve(bytes.size() / encoding.unit);
    for (std::size_t begin = 0; begin < bytes.size(); begin += encoding.unit) {
        std::uint32_t unit = 0;
        for (std::size_t i = 0; i < encoding.unit; ++i) {
            const std::size_t place = encoding.high_first ? i : encoding.unit - 1 - i;
            unit = unit << 8U | static_cast<unsigned char>(bytes[begin + place]);
        }
        if (unit >= static_cast<std::uint32_t>(kPastCharacters))
            Refuse("it is no text in a Unicode encoding");
        units += static_cast<wchar_t>(unit);
    }
    return units;
}

std::optional<wchar_t> JoinSurrogates(wchar_t first, wchar_t second) {
    if (first >= kSecondSurrogate || second < kSecondSurrogate || second >= kPastSurrogates)
        return std::nullopt;
    return kPastUnits + ((first - kFirstSurrogate) << 10) + (second - kSecondSurrogate);
}

std::wstring Characters(const std::wstring& units) {
    std::wstring characters;
    characters.reserve(units.size());
    for (std::size_t i = 0; i < units.size(); ++i) {
        const wchar_t unit = units[i];
        if (unit < kFirstSurrogate || unit >= kPastSurrogates) {
            characters += unit;
            continue;
        }
        const auto joined =
            i + 1 < units.size() ? JoinSurrogates(unit, units[i + 1]) : std::nullopt;
        if (!joined) Refuse("it has half a character");
        characters += *joined;
        ++i;
    }
    return characters;
}

void AppendUnit(std::string& bytes, wchar_t unit) {
    bytes += static_cast<char>(static_cast<std::uint32_t>(unit) & 0xFFU);
    bytes += static_cast<char>(static_cast<std::uint32_t>(unit) >> 8U & 0xFFU);
}

}  // namespace

std::string DecodeText(std::string_view bytes) {
    const Encoding encoding = EncodingOf(bytes);
    std::wstring text;
    if (encoding.unit == 1) {
        text = Characters(pugi::as_wide(std::string(bytes)));
        if (pugi::as_utf8(text) != bytes) Refuse("it is no text in a Unicode encoding");
    } else {
        text = Characters(Units(bytes, encoding));
    }
    if (!text.empty() && text.front() == kMark) text.erase(0, 1);
    while (!text.empty() && text.back() == L'\0') text.pop_back();
    if (text.find(L'\0') != std::wstring::npos) Refuse("its text has a zero character");
    return pugi::as_utf8(text);
}

std::string EncodeText(std::string_view utf8) {
    std::string bytes;
    bytes.reserve(2 * utf8.size() + 2);
    AppendUnit(bytes, kMark);
    for (const wchar_t character : pugi::as_wide(std::string(utf8))) {
        if (character == L'\n') AppendUnit(bytes, L'\r');
        if (character < kPastUnits) {
            AppendUnit(bytes, character);
            continue;
        }
        const wchar_t rest = character - kPastUnits;
        AppendUnit(bytes, kFirstSurrogate + (rest >> 10));
        AppendUnit(bytes, kSecondSurrogate + (rest & 0x3FF));
    }
    return bytes;
}

}  // namespace engine::files
