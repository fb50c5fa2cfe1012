// Small helpers over text: padding, ASCII case, splitting at blanks and numbers as text.
#pragma once

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// Characters of a UTF-8 text (code points; a stray byte counts as one).
inline std::size_t CharacterCount(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
    }));
}

/// `text` with blanks on its right up to `width` characters; never cut.
inline std::string PadSpaces(std::string_view text, std::size_t width) {
    std::string padded(text);
    const std::size_t length = CharacterCount(text);
    if (length < width) padded.append(width - length, ' ');
    return padded;
}

inline std::string LowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

inline std::string UpperCase(std::string_view text) {
    std::string upper(text);
    for (char& c : upper)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return upper;
}

inline bool StartsWith(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

/// The pieces between single separators; a run of separators gives empty pieces, an empty text
/// gives none.
inline std::vector<std::string> Split(std::string_view text, char separator) {
    std::vector<std::string> pieces;
    if (text.empty()) return pieces;
    std::size_t begin = 0;
    for (;;) {
        const std::size_t end = text.find(separator, begin);
        pieces.emplace_back(text.substr(begin, end - begin));
        if (end == std::string_view::npos) return pieces;
        begin = end + 1;
    }
}

inline std::string TrimBlanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    return std::string(text.substr(first, text.find_last_not_of(' ') - first + 1));
}

/// The shortest text that reads back as the same number, without an exponent ("60", "0.5",
/// "29.97"). Floats and doubles each have their own shortest text. The value must be finite.
template <typename Number>
std::string NumberText(Number value) {
    std::array<char, 400> buffer{};  // the longest fixed double has 325 characters
    if constexpr (std::is_floating_point_v<Number>) {
        if (value == Number{0}) return "0";  // no sign on a zero
        const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                                std::chars_format::fixed);
        return {buffer.data(), end};
    } else {
        const auto [end, error] =
            std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
        return {buffer.data(), end};
    }
}

/// The nearest whole number, halves to the even neighbour (whatever the rounding mode of the
/// floating-point unit is).
inline double RoundHalfToEven(double value) {
    const double below = std::floor(value);
    const double rest = value - below;
    if (rest < 0.5) return below;
    if (rest > 0.5) return below + 1;
    return std::fmod(below, 2.0) == 0.0 ? below : below + 1;
}

}  // namespace platform
