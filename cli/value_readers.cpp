#include "cli/value_readers.h"

#include <charconv>
#include <limits>
#include <optional>
#include <string_view>
#include <system_error>

#include <fmt/core.h>

#include "platform/error.h"
#include "platform/text.h"

namespace cli {
namespace {

// from_chars knows no locale, blanks or "+", but takes "inf" and "nan"; hence the look at the first
// character behind the sign.
template <typename Number>
std::optional<Number> ReadNumber(const std::string& word) {
    const std::string trimmed = platform::TrimBlanks(word);
    std::string_view text = trimmed;
    const bool plus = platform::StartsWith(text, "+");
    if (plus) text.remove_prefix(1);
    const std::size_t first = !plus && platform::StartsWith(text, "-") ? 1 : 0;
    if (text.find_first_of("0123456789.", first) != first) return std::nullopt;
    Number value{};
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || rest != end) return std::nullopt;
    return value;
}

std::optional<std::int32_t> ReadWhole(const std::string& word) {
    const std::optional<double> number = ReadNumber<double>(word);
    if (!number) return std::nullopt;
    const double whole = platform::RoundHalfToEven(*number);
    if (whole < std::numeric_limits<std::int32_t>::min() ||
        whole > std::numeric_limits<std::int32_t>::max()) {
        return std::nullopt;
    }
    return static_cast<std::int32_t>(whole);
}

}  // namespace

ValueReaders::ValueReaders(platform::OutputPane& pane) : pane_(pane) {}

std::int32_t ValueReaders::ReadInteger(const std::vector<std::string>& words,
                                       std::size_t option_index, std::size_t value_index) {
    if (!HasValue(words, option_index, value_index)) return kUnread;
    const std::optional<std::int32_t> value = ReadWhole(words[value_index]);
    if (value && *value >= 0) return *value;
    RefuseInteger(words[option_index]);
    return kUnread;
}

float ValueReaders::ReadFloat(const std::vector<std::string>& words, std::size_t option_index,
                              std::size_t value_index) {
    if (!HasValue(words, option_index, value_index)) return kUnread;
    const std::optional<float> value = ReadNumber<float>(words[value_index]);
    if (value && *value >= 0) return *value;
    RefuseFloat(words[option_index]);
    return kUnread;
}

std::string ValueReaders::ReadString(const std::vector<std::string>& words,
                                     std::size_t option_index, std::size_t value_index) {
    if (value_index >= words.size()) {
        throw platform::Error(
            platform::kElementNotFound,
            fmt::format("The command ends where {} needs a value", words[option_index]));
    }
    if (!HasValue(words, option_index, value_index)) return {};
    if (words[value_index].empty()) RefuseFormat(words[option_index]);
    return words[value_index];
}

std::int32_t ValueReaders::ConvertStringToInteger(const std::string& text) {
    const std::optional<std::int32_t> value = ReadWhole(text);
    if (value && *value != kUnread) return *value;
    RefuseText(text);
    return kUnread;
}

void ValueReaders::RefuseFormat(const std::string& option) {
    pane_.OutputError(fmt::format("Invalid format for parameter {}", option));
}

void ValueReaders::RefuseInteger(const std::string& option) {
    pane_.OutputError(fmt::format("Expect integer value for parameter {}", option));
}

void ValueReaders::RefuseFloat(const std::string& option) {
    pane_.OutputError(fmt::format("Expect float value for parameter {}", option));
}

void ValueReaders::RefuseText(const std::string& text) {
    pane_.OutputError(fmt::format("Invalid format {} expecting integer value", text));
}

bool ValueReaders::HasValue(const std::vector<std::string>& words, std::size_t option_index,
                            std::size_t value_index) {
    if (value_index < words.size() && !platform::StartsWith(words[value_index], "-")) return true;
    RefuseFormat(words[option_index]);
    return false;
}

}  // namespace cli
