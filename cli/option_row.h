// What the rows of the option table are written with. Names are compared one by one and no two are
// the same, so rows stand in the help's order.
#pragma once

#include "cli/option_table.h"

namespace cli {

OptionBlock InputOutputOptions();
OptionBlock ProfileOptions();
OptionBlock AudioOptions();
OptionBlock VideoOptions();
OptionBlock SessionOptions();

using Set = EncodeSettings;

/// The field that a path of members leads to, for example v_clip and then its left.
template <auto... path, typename Settings>
auto& Field(Settings& settings) {
    // clang-format off
    return (settings .* ... .* path);
    // clang-format on
}

template <auto... path>
bool IsGiven(const EncodeSettings& settings) {
    return Field<path...>(settings) != Field<path...>(kNothingGiven);
}

template <auto... path>
constexpr OptionValue TextOf(ValueKind kind, const TextRule* rule = nullptr) {
    return {.kind = kind,
            .store_text = [](EncodeSettings& settings,
                             const std::string& text) { Field<path...>(settings) = text; },
            .given = IsGiven<path...>,
            .text_rule = rule};
}

template <auto... path>
constexpr OptionValue IntegerOf(ValueKind kind, std::int32_t fallback = 0, std::int32_t factor = 1,
                                const NumberRule* rule = nullptr) {
    return {.kind = kind,
            .store_integer = [](EncodeSettings& settings,
                                std::int32_t number) { Field<path...>(settings) = number; },
            .given = IsGiven<path...>,
            .fallback = fallback,
            .factor = factor,
            .number_rule = rule};
}

template <auto... path>
constexpr OptionValue Text() {
    return TextOf<path...>(ValueKind::Text);
}
template <auto... path>
constexpr OptionValue InputName() {
    return TextOf<path...>(ValueKind::InputName);
}
template <auto... path>
constexpr OptionValue OptionalText() {
    return TextOf<path...>(ValueKind::OptionalText);
}
template <auto... path>
constexpr OptionValue UpperText() {
    return TextOf<path...>(ValueKind::UpperText);
}
template <auto... path>
constexpr OptionValue OneOf(const TextRule& rule) {
    return TextOf<path...>(ValueKind::UpperText, &rule);
}
template <auto... path>
constexpr OptionValue Integer() {
    return IntegerOf<path...>(ValueKind::Integer);
}
template <auto... path>
constexpr OptionValue IntegerTimes(std::int32_t factor) {
    return IntegerOf<path...>(ValueKind::Integer, 0, factor);
}
template <auto... path>
constexpr OptionValue IntegerOr(std::int32_t fallback) {
    return IntegerOf<path...>(ValueKind::OptionalInteger, fallback);
}
template <auto... path>
constexpr OptionValue IntegerIn(const NumberRule& rule) {
    return IntegerOf<path...>(ValueKind::Integer, 0, 1, &rule);
}
template <auto... path>
constexpr OptionValue EndMark() {
    return IntegerOf<path...>(ValueKind::EndMark);
}
template <auto... path>
constexpr OptionValue FloatTimes(std::int32_t factor) {
    return {.kind = ValueKind::Float,
            .store_float = [](EncodeSettings& settings,
                              float number) { Field<path...>(settings) = number; },
            .given = IsGiven<path...>,
            .factor = factor};
}

inline constexpr OptionValue kSaveName{.kind = ValueKind::SaveName};
inline constexpr OptionValue kLoadName{.kind = ValueKind::LoadName};

// Errors that several notes tell of.
inline constexpr std::string_view kText =
    "no text: `Error: 0x8002000B - …` at the end of the command, else `Invalid format for "
    "parameter …`";
inline constexpr std::string_view kNoSize =
    "no whole number: `Expect integer value for parameter …`; `Invalid profile: 0x80070057 …` "
    "above 16384";
inline constexpr std::string_view kNoRate =
    "no whole number: `Expect integer value for parameter …`";

}  // namespace cli
