// The parts of the help that the reference repeats.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace reference {

/// Names of the option's values as the help has them: "<start time> <end time>"; empty without any
/// or when the help has no entry.
std::string HelpValues(const std::string& option);

/// Numbered lines of an option's entry, in order: number, text. Examples are left out.
std::vector<std::pair<std::string, std::string>> HelpNumbers(const std::string& option);

/// The profile codes in the help's order, with the encoder's name for each.
std::vector<std::pair<std::string, std::string>> HelpProfiles();

}  // namespace reference
