// The options of the command language: one row an option, in the order in which they are compared.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "cli/encode_settings.h"

namespace cli {

/// How one value of an option is taken.
enum class ValueKind {
    None,             // the option has no further values
    Text,             // a word as typed, not empty
    UpperText,        // the same, folded to upper case
    OptionalText,     // a word, when there is one that does not begin with "-"
    Integer,          // a whole number from 0 on
    OptionalInteger,  // the same when there is such a word, else the fallback
    Float,            // a number from 0 on
    EndMark,          // "end", stored as 0, or a whole number from 0 on
    SaveName,         // the configuration file to write when the command has parsed
    LoadName,         // the configuration file that was read before the options
};

/// The texts that an option accepts, and the line about all others.
struct TextRule {
    std::span<const std::string_view> accepted;
    std::string_view line;
};

/// The whole numbers that an option accepts: from `lowest` to `highest` in steps of `step`.
struct NumberRule {
    enum class Names { Option, Value, Nothing };
    std::int32_t lowest;
    std::int32_t highest;
    std::int32_t step;
    std::string_view line;  // about all others, followed by the option or the value as typed
    Names names;            // Nothing: no line at all
};

/// One value of an option: how it is read, what it must be, where it goes.
struct OptionValue {
    ValueKind kind = ValueKind::None;
    void (*store_text)(EncodeSettings&, const std::string&) = nullptr;
    void (*store_integer)(EncodeSettings&, std::int32_t) = nullptr;
    void (*store_float)(EncodeSettings&, float) = nullptr;
    std::int32_t fallback = 0;  // of an optional number
    std::int32_t factor = 1;    // between the number typed and the one stored
    const TextRule* text_rule = nullptr;
    const NumberRule* number_rule = nullptr;
};

struct Option {
    std::string_view name;       // lower case, with its dash
    bool EncodeSettings::*flag;  // set as soon as the option stands in a command; may be null
    std::array<OptionValue, 4> values{};  // in the order in which they follow the option
};

std::span<const Option> Options();

/// The first row of that name, null when there is none. `lower_case_word` is compared as it is.
const Option* FindOption(std::string_view lower_case_word);

}  // namespace cli
