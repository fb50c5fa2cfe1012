// Names the rows of a table of cases, so that each can be run by itself.
#pragma once

#include <gtest/gtest.h>

#include <cctype>
#include <string>

namespace test_support {

/// For INSTANTIATE_TEST_SUITE_P over records that say `why`: its words, and the row's number.
struct NameOfRow {
    template <typename Row>
    std::string operator()(const testing::TestParamInfo<Row>& row) const {
        std::string name;
        bool starts_word = true;
        for (const char* c = row.param.why; *c != '\0'; ++c) {
            const auto letter = static_cast<unsigned char>(*c);
            const bool keep = std::isalnum(letter) != 0;
            if (keep) name += static_cast<char>(starts_word ? std::toupper(letter) : letter);
            starts_word = !keep;
        }
        return name + std::to_string(row.index);
    }
};

}  // namespace test_support
