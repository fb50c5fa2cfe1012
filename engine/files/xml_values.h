// Values that stand in attributes: numbers as files spell them, held to what the tree takes.
#pragma once

#include <cstdint>
#include <optional>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/plan/value_checks.h"

namespace engine::files {

/// Decimal or with 0x, a minus before it; a huge one is 2 to the 60th, so that differences have
/// room. Nothing for what is no number.
std::optional<std::int64_t> ParseNumber(std::string_view text);

/// Reads the attributes of one part of a file.
class ValueReader {
  public:
    /// @param part   what the values belong to ("stream 1"), for errors and notes
    /// @param notes  gets a line for each value that was out of range
    ValueReader(std::string part, std::vector<std::string>& notes)
        : part_(std::move(part)), notes_(notes) {}

    /// Nothing where it is missing or empty. Throws Error (invalid data) for what is no number.
    std::optional<std::int64_t> Find(const pugi::xml_node& node, const char* name) const;
    std::int64_t Number(const pugi::xml_node& node, const char* name,
                        std::int64_t fallback = 0) const {
        return Find(node, name).value_or(fallback);
    }
    /// The nearest value of the range.
    std::int32_t Clamped(const ValueRange& range, std::int64_t value) const;

    [[noreturn]] void Refuse(std::uint32_t number, const std::string& reason) const;

  private:
    std::string part_;
    std::vector<std::string>& notes_;
};

/// Sets a number; what says the same in another spelling is left as it stands.
void PutNumber(pugi::xml_node node, const char* name, std::int64_t value);
/// The same for what is written only where it is not `usual`.
void PutUnlessUsual(pugi::xml_node node, const char* name, std::int64_t value, std::int64_t usual);

/// An attribute of ours: written where what everybody writes says something else than is meant.
template <typename Values>
struct OwnAttribute {
    const char* name;
    ValueRange range;
    std::int64_t (*get)(const Values&);  // -1 = not set
    void (*set)(Values&, std::int32_t);
};

template <typename Values, typename Rows>
void ReadOwn(const pugi::xml_node& node, const ValueReader& reader, const Rows& rows,
             Values& values) {
    for (const OwnAttribute<Values>& row : rows)
        if (const auto number = reader.Find(node, row.name))
            row.set(values, reader.Clamped(row.range, *number));
}

/// @param read  what the node says without them
template <typename Values, typename Rows>
void WriteOwn(pugi::xml_node node, const Rows& rows, const Values& values, const Values& read) {
    for (const OwnAttribute<Values>& row : rows)
        PutUnlessUsual(node, row.name, row.get(values), row.get(read));
}

}  // namespace engine::files
