// Names the rows of a table of cases, so that each can be run by itself.
#pragma once

#include <gtest/gtest.h>

#include <cctype>
#include <string>

namespace test_support {

/// The words of a text, and the row's number.
inline std::string RowName(const char* text, std::size_t index) {
    std::string name;
    bool starts_word = true;
    for (const char* c = text; *c != '\0'; ++c) {
        const auto letter = static_cast<unsigned char>(*c);
        const bool keep = std::isalnum(letter) != 0;
        if (keep) name += static_cast<char>(starts_word ? std::toupper(letter) : letter);
        starts_word = !keep;
    }
    return name + std::to_string(index);
}

/// For INSTANTIATE_TEST_SUITE_P over records that say `why`.
struct NameOfRow {
    template <typename Row>
    std::string operator()(const testing::TestParamInfo<Row>& row) const {
        return RowName(row.param.why, row.index);
    }
};

}  // namespace test_support
