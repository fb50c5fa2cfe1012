#include "docs/reference/help_entries.h"

#include <algorithm>
#include <cctype>

#include "cli/help.h"
#include "platform/text.h"

namespace reference {
namespace {

using Lines = std::vector<std::string>;

constexpr std::string_view kProfileCodes =
    "Codes and basic descriptions for the predefined profiles:";

/// An option's line and those below it, up to the next option.
Lines Entry(const std::string& option) {
    Lines entry;
    for (const std::string_view line : cli::HelpLines()) {
        const bool begins = platform::StartsWith(line, "[");
        if (begins && !entry.empty()) break;
        if (begins ? platform::StartsWith(line, "[" + option + "]") : !entry.empty())
            entry.emplace_back(line);
    }
    return entry;
}

bool IsNumber(std::string_view text) {
    return !text.empty() && std::ranges::all_of(text, [](char c) { return std::isdigit(c) != 0; });
}

}  // namespace

std::string HelpValues(const std::string& option) {
    const Lines entry = Entry(option);
    if (entry.empty()) return {};
    return platform::TrimBlanks(entry.front().substr(option.size() + 2));
}

std::vector<std::pair<std::string, std::string>> HelpNumbers(const std::string& option) {
    std::vector<std::pair<std::string, std::string>> numbers;
    for (const std::string& line : Entry(option)) {
        const std::string text = platform::TrimBlanks(line);
        const std::size_t colon = text.find(": ");
        const bool is_entry = colon != std::string::npos && IsNumber(text.substr(0, colon));
        const bool goes_on = platform::StartsWith(line, "      ") &&
                             !platform::StartsWith(text, "Example") &&
                             text.find(' ') == std::string::npos;
        if (is_entry) {
            numbers.emplace_back(text.substr(0, colon), text.substr(colon + 2));
        } else if (goes_on && !numbers.empty()) {
            numbers.back().second += " " + text;
        }
    }
    return numbers;
}

std::vector<std::pair<std::string, std::string>> HelpProfiles() {
    std::vector<std::pair<std::string, std::string>> profiles;
    bool listed = false;
    for (const std::string_view line : cli::HelpLines()) {
        if (line == kProfileCodes) listed = true;
        if (listed && platform::StartsWith(line, "[")) break;
        const std::size_t colon = line.find(": ");
        if (listed && colon != std::string_view::npos)
            profiles.emplace_back(platform::TrimBlanks(std::string(line.substr(0, colon))),
                                  platform::TrimBlanks(std::string(line.substr(colon + 2))));
    }
    return profiles;
}

}  // namespace reference
