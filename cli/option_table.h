// The options of the command language: one row an option, which parser, help, explanations and the
// reference all read.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "cli/command_actions.h"
#include "cli/encode_settings.h"

namespace cli {

/// How one value of an option is taken.
enum class ValueKind {
    None,             // the option has no further values
    Text,             // a word as typed, not empty
    InputName,        // the same; one that cannot be read leaves the setting empty
    UpperText,        // a word as typed, not empty, folded to upper case
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
    std::int32_t step = 1;
    std::string_view line = {};  // about all others, followed by the option or the value as typed
    Names names;                 // Nothing: no line at all
};

/// One value of an option: how it is read, what it must be, where it goes.
struct OptionValue {
    ValueKind kind = ValueKind::None;
    void (*store_text)(EncodeSettings&, const std::string&) = nullptr;
    void (*store_integer)(EncodeSettings&, std::int32_t) = nullptr;
    void (*store_float)(EncodeSettings&, float) = nullptr;
    bool (*given)(const EncodeSettings&) = nullptr;  // whether a value is there; null: none is kept
    std::int32_t fallback = 0;                       // of an optional number
    std::int32_t factor = 1;                         // between the number typed and the one stored
    const TextRule* text_rule = nullptr;
    const NumberRule* number_rule = nullptr;
};

/// Whether the example of a note runs today.
enum class Today {
    Works,
    Hardware  // it depends on the machine
};

/// What the reference says about an option beside its line in the help.
struct OptionNote {
    std::string_view values = {};   // names of the values where the help has no entry
    std::string_view accepts = {};  // "" = the texts of its rule
    std::string_view fallback = {};
    std::string_view effect = {};  // "" = the reference leaves the word out
    // Words behind the program's name, as a shell takes them; they read film.avi, talk.wav,
    // card.png, job.weu, parts.edl and holiday/.
    std::string_view example = {};
    Today today = Today::Works;
    std::string_view errors = {};
};

struct Option {
    std::string_view name;                 // lower case, with its dash
    bool EncodeSettings::*flag = nullptr;  // set as soon as the option stands in a command
    std::array<OptionValue, 4> values{};   // in the order in which they follow the option
    // What the word shows as the only one of a command; among others it is no option then.
    void (CommandActions::*show)() = nullptr;
    std::string_view help = {};  // its lines of the help, each with its "\n"; some have no entry
    OptionNote note = {};
};

/// Options that stand together in the help, in its order.
struct OptionBlock {
    std::string_view heading;  // the lines above them
    std::span<const Option> options;
};

std::span<const OptionBlock> OptionBlocks();

/// The row of that name, null when there is none. `lower_case_word` is compared as it is.
const Option* FindOption(std::string_view lower_case_word);

/// Whether the settings hold what the option says, of this command or an earlier one.
bool Given(const Option& option, const EncodeSettings& settings);

}  // namespace cli
