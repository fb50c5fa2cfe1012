#include "docs/reference/reference.h"

#include <fmt/format.h>

#include <string_view>

#include "cli/option_table.h"
#include "docs/reference/help_entries.h"
#include "docs/reference/profile_table.h"
#include "engine/plan/audio_formats.h"
#include "platform/pixel_format_table.h"
#include "platform/text.h"

namespace reference {
namespace {

using cli::Today;
using platform::VbrMode;

constexpr std::string_view kIntroduction =
    R"(# Command reference

This page is printed by the program `reference` from the tables that the command language itself
uses, and a test keeps the two the same. After a change of an option, a profile, a codec or a note:

```
cmake --build build/release --target reference-page
```

## A command

A command is a line of words: options, each followed by its values. In the window the line is split
at every single blank, so a name with blanks is given as a `file://` URI with `%20` for each. On the
console a word is what the shell makes of it, so quotes work there.

- Options are recognised in any case; the single words that list or help too.
- A value that begins with `-` counts as missing, so no number is negative.
- Whole numbers may be typed with decimals and are rounded, halves to the even neighbour.
- The first mistake ends the command with one line, and nothing is written: exit status 1 on the
  console ([all of them](console.md)).
- A later option wins over an earlier one, and both over a configuration file.

A text value that is missing at the end of a command gives `Error: 0x8002000B - …`, any other
missing value `Invalid format for parameter …`, an unknown word `Invalid parameter: …`.

### What carries over

In one window, and in one prompt or stream of lines on the console, every value stays as it is until
a later command gives the option again. There is no word that takes a flag or a value back. The
profile object is kept too: once a command has used `-profile`, the defaults of custom profiles no
longer apply. `-silent` is the exception: it ends with a command that encodes one file. Each start
of the console program is a fresh one, and so is the program's start in a window.

### Defaults

Without `-profile` and `-loadprofile`, what is not given becomes: WMA9STD in mode 0 with the format
of the table, WMV9 in mode 0 at 250000 bps, quality 75 (95 in mode 2), a key frame every 10 seconds,
buffers of 5000 ms (sound's peak buffer 3000 ms), peaks of 1.5 times the rate, the source's size and
rate.

| -a_mode | codec | -a_setting |
|---|---|---|
| 2 | WMA9PRO | Q75_44_2_24 |
| 2 | WMA9LSL | Q100_44_2_16 |
| 2 | others | Q75_44_2 |
| 0 | WMSP9 | 12_16_1 |
| 0 | PCM | 705_22_2 |
| others | WMA9PRO | 128_44_2_24 |
| others | others | 64_44_2 |

)";

constexpr std::string_view kHowExamples =
    "Where an example is marked as not possible yet, the program takes the option and refuses the\n"
    "command in one line that says so; the words are the ones that it will understand.\n\n";

// Modes in the order of the -a_mode and -v_mode numbers.
constexpr VbrMode kModeNumbers[] = {VbrMode::Constant, VbrMode::Constant, VbrMode::Quality,
                                    VbrMode::BitRate, VbrMode::Peak};
// The numbers that differ in their formats.
constexpr std::size_t kListedModes[] = {0, 2, 3, 4};

std::string Accepted(const cli::Option& option) {
    if (!option.note.accepts.empty()) return std::string(option.note.accepts);
    return fmt::format("{}, in any case",
                       fmt::join(option.values.front().text_rule->accepted, ", "));
}

std::string Section(const cli::Option& option) {
    const cli::OptionNote& note = option.note;
    std::string values = HelpValues(std::string(option.name));
    if (values.empty()) values = note.values;
    const std::string fallback =
        note.fallback.empty() ? std::string() : fmt::format("- Default: {}\n", note.fallback);
    std::string_view mark;
    if (note.today == Today::Hardware) mark = " (depends on the machine)";
    return fmt::format(
        "### {}\n\n`{}{}{}`\n\n{}\n\n- Values: {}\n{}- Example{}: `tessivo-console {}`\n"
        "- Errors: {}\n\n",
        option.name, option.name, values.empty() ? "" : " ", values, note.effect, Accepted(option),
        fallback, mark, note.example, note.errors);
}

std::string Sections(bool standing_alone) {
    std::string text;
    for (const cli::OptionBlock& block : cli::OptionBlocks())
        for (const cli::Option& option : block.options)
            if ((option.show != nullptr) == standing_alone && !option.note.effect.empty())
                text += Section(option);
    return text;
}

std::string OptionSections() {
    return "## Options\n\n" + std::string(kHowExamples) + Sections(false) +
           "## Words that stand alone\n\n" + Sections(true);
}

constexpr int kFirstUnsupportedFilter = 2;
constexpr int kLastUnsupportedFilter = 4;
constexpr int kLastFilterOfEveryCodec = 15;

std::string_view FilterNote(int number) {
    if (!FilterWorksToday(number)) return "with -v_codec MP41 alone";
    const bool unsupported = number >= kFirstUnsupportedFilter && number <= kLastUnsupportedFilter;
    return unsupported ? "does what 1 does" : "works";
}

std::string NumberTable(const std::string& option) {
    std::string table = fmt::format("| {} | |\n|---|---|\n", option);
    for (const auto& [number, text] : HelpNumbers(option))
        table += fmt::format("| {} | {} |\n", number, text);
    return table + "\n";
}

std::string FilterTable() {
    std::string table = "| -v_preproc | | today |\n|---|---|---|\n";
    for (const auto& [number, text] : HelpNumbers("-v_preproc"))
        table += fmt::format("| {} | {} | {} |\n", number, text, FilterNote(std::stoi(number)));
    return table + "\n";
}

std::string CodecTables() {
    std::string text = "## Codecs\n\n| -a_codec | name |\n|---|---|\n";
    for (const platform::AudioCodecRow& row : platform::kAudioCodecs)
        text += fmt::format("| {} | {} |\n", row.short_name, row.name);
    text += "\n| -v_codec | name |\n|---|---|\n";
    for (const platform::VideoCodecRow& row : platform::kVideoCodecs)
        text += fmt::format("| {} | {} |\n", row.short_name, row.name);
    return text + "\n";
}

std::string ArgumentsOf(const platform::AudioCodecRow& row, VbrMode mode) {
    std::string arguments;
    for (const engine::AudioFormat& format : engine::AudioFormats(row, mode))
        arguments += (arguments.empty() ? "" : " ") + engine::FormatArgument(row, mode, format);
    return arguments;
}

std::string FormatTables() {
    std::string text =
        "## Audio formats\n\n`-a_setting` is `<kilobits>_<kilohertz>_<channels>`, in mode 2 "
        "`Q<quality>_<kilohertz>_<channels>`, for WMA9PRO and WMA9LSL with `_<bits>` behind it. "
        "88, 44, 22 and 11 kilohertz stand for 88200, 44100, 22050 and 11025 Hz; 1411, 706 (or "
        "705) and "
        "353 kilobits for 1411200, 705600 and 352800 bps. Modes 0 and 1 have the same formats.\n\n"
        "| codec | mode | formats |\n|---|---|---|\n";
    for (const platform::AudioCodecRow& row : platform::kAudioCodecs)
        for (const std::size_t number : kListedModes)
            if (const std::string all = ArgumentsOf(row, kModeNumbers[number]); !all.empty())
                text += fmt::format("| {} | {} | {} |\n", row.short_name, number, all);
    return text + "\n";
}

std::string PixelFormatList() {
    std::string names;
    for (const platform::PixelFormatRow& row : platform::kPixelFormats)
        names += fmt::format("{}{}", names.empty() ? "" : ", ", row.name);
    return "## Pixel formats\n\n" + names + "\n";
}

}  // namespace

bool FilterWorksToday(int number) { return number <= kLastFilterOfEveryCodec; }

std::string CommandReference() {
    std::string text(kIntroduction);
    text += OptionSections();
    text +=
        "## Profile codes\n\n" + ProfileTable() +
        "\nA file whose frame rate is higher than the profile's keeps its own: `av100` of a file "
        "of 30 frames a second has 30. Video buffers are 5000 ms, key frames 10 seconds apart "
        "at most. Codes that begin with scrn capture the screen, by default 30 frames a "
        "second.\n\n";
    text += "## Modes\n\n" + NumberTable("-a_mode") + NumberTable("-v_mode");
    text += "## Filters\n\n" + FilterTable();
    text += CodecTables() + FormatTables() + PixelFormatList();
    return text;
}

}  // namespace reference
