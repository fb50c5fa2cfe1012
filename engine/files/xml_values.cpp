#include "engine/files/xml_values.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "engine/files/xml_tree.h"
#include "platform/error.h"
#include "platform/text.h"

namespace engine::files {

std::optional<std::int64_t> ParseNumber(std::string_view text) {
    const std::string trimmed = platform::TrimBlanks(text);
    std::string_view digits = trimmed;
    const bool negative = platform::StartsWith(digits, "-");
    if (negative) digits.remove_prefix(1);
    const bool hexadecimal =
        platform::StartsWith(digits, "0x") || platform::StartsWith(digits, "0X");
    if (hexadecimal) digits.remove_prefix(2);
    std::uint64_t number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, number, hexadecimal ? 16 : 10);
    if (stop != end || error == std::errc::invalid_argument) return std::nullopt;
    constexpr std::uint64_t kMost = std::uint64_t{1} << 60U;
    if (error == std::errc::result_out_of_range || number > kMost) number = kMost;
    const auto whole = static_cast<std::int64_t>(number);
    return negative ? -whole : whole;
}

std::optional<std::int64_t> ValueReader::Find(const pugi::xml_node& node, const char* name) const {
    const std::string text = AttributeNamed(node, name).value();
    if (text.empty()) return std::nullopt;
    const auto number = ParseNumber(text);
    if (!number) Refuse(platform::kInvalidData, fmt::format("{}=\"{}\" is no number", name, text));
    return number;
}

std::int32_t ValueReader::Clamped(const ValueRange& range, std::int64_t value) const {
    const auto clamped =
        static_cast<std::int32_t>(std::clamp<std::int64_t>(value, range.least, range.most));
    if (clamped != value)
        notes_.push_back(fmt::format("{}: {} cannot be {}, {} is taken.", part_, range.property,
                                     value, clamped));
    return clamped;
}

void ValueReader::Refuse(std::uint32_t number, const std::string& reason) const {
    throw platform::Error(number, part_ + ": " + reason);
}

void PutNumber(pugi::xml_node node, const char* name, std::int64_t value) {
    if (ParseNumber(AttributeNamed(node, name).value()) != value)
        Put(node, name, fmt::to_string(value));
}

void PutUnlessUsual(pugi::xml_node node, const char* name, std::int64_t value, std::int64_t usual) {
    if (value != usual) return PutNumber(node, name, value);
    // A second one of that name would be read in the place of the first.
    while (node.remove_attribute(AttributeNamed(node, name))) {
    }
}

}  // namespace engine::files
