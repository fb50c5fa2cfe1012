#include "docs/reference/help_entries.h"

#include <algorithm>
#include <cctype>

#include "cli/option_table.h"
#include "platform/text.h"

namespace reference {
namespace {

using Lines = std::vector<std::string>;

Lines LinesOf(const std::string& option) {
    return platform::Split(cli::FindOption(option)->help, '\n');
}

bool IsNumber(std::string_view text) {
    return !text.empty() && std::ranges::all_of(text, [](char c) { return std::isdigit(c) != 0; });
}

}  // namespace

std::string HelpValues(const std::string& option) {
    for (const std::string& line : LinesOf(option))
        if (platform::StartsWith(line, "["))
            return platform::TrimBlanks(line.substr(option.size() + 2));
    return {};
}

std::vector<std::pair<std::string, std::string>> HelpNumbers(const std::string& option) {
    std::vector<std::pair<std::string, std::string>> numbers;
    for (const std::string& line : LinesOf(option)) {
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
    for (const std::string& line : LinesOf("-profile"))
        if (const std::size_t colon = line.find(": "); colon != std::string::npos)
            profiles.emplace_back(platform::TrimBlanks(line.substr(0, colon)),
                                  platform::TrimBlanks(line.substr(colon + 2)));
    return profiles;
}

}  // namespace reference
