// What is said of files that end too early.
#include "engine/sources/files/cut_off.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include "engine/sources/files/stated_size.h"

namespace engine {
namespace {

Ticks Ms(std::int64_t ms) { return Ticks::FromMilliseconds(ms); }

struct EndCase {
    const char* name;
    SourceEnd end;
    const char* text;
};

class CutOffTable : public testing::TestWithParam<EndCase> {};

TEST_P(CutOffTable, IsSaid) { EXPECT_EQ(CutOffText("f", GetParam().end), GetParam().text); }

// clang-format off
const EndCase kEnds[] = {
    //                        decoded       read          whole         stated        bytes stated
    {"whole",                {Ms(9960),     Ms(9960),     Ms(9960),     Ms(10'000),   1000, 1000}, ""},
    {"nothing_stated",       {Ms(6000),     Ms(5960),     Ms(6000),     {},           1000, 0},    ""},
    {"short_by_a_half",      {Ms(5000),     Ms(4960),     Ms(5000),     Ms(10'000),   1000, 1000},
     "f: it ends after 5.00 of the 10.00 seconds that it states; it is cut off or damaged"},
    {"short_by_a_rounding",  {Ms(7'190'000), Ms(7'190'000), Ms(7'190'000), Ms(7'200'000), 1000, 1000}, ""},
    {"garbage_to_the_end",   {Ms(5000),     Ms(9960),     Ms(5000),     {},           1000, 0},
     "f: after 5.00 of 9.96 seconds nothing in it can be decoded; it is damaged"},
    {"bytes_that_are_stated", {Ms(900),     Ms(880),      Ms(900),      {},           60'000, 100'000},
     "f: it ends after 60000 of the 100000 bytes that it states, 0.90 seconds; it is cut off"},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Ends, CutOffTable, testing::ValuesIn(kEnds),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(StatedSize, IsReadWhereTheContainerHasIt) {
    const std::filesystem::path path = std::filesystem::path(testing::TempDir()) / "stated_size";
    const auto stated = [&](const std::string& bytes) {
        std::ofstream(path, std::ios::binary) << bytes;
        return StatedBytes(path.string());
    };
    const std::string rest(32, '\0');
    EXPECT_EQ(stated(std::string("RIFF\x10\x27\0\0WAVE", 12) + rest), 10'008U);
    EXPECT_EQ(stated(std::string("FORM\0\0\x27\x10"
                                 "AIFF",
                                 12) +
                     rest),
              10'008U);
    EXPECT_EQ(stated(std::string("RIFF\xFF\xFF\xFF\xFFWAVE", 12) + rest), std::nullopt);
    EXPECT_EQ(stated(std::string("RIFF\0\0\0\0WAVE", 12) + rest), std::nullopt);
    EXPECT_EQ(stated("RIFF"), std::nullopt);
    EXPECT_EQ(stated(std::string(48, 'x')), std::nullopt);
    std::filesystem::remove(path);
    EXPECT_EQ(StatedBytes(path.string()), std::nullopt);
}

}  // namespace
}  // namespace engine
