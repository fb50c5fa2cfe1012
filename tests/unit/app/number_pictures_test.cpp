#include "app/number_pictures.h"

#include <cstdint>
#include <limits>

namespace app {
namespace {

struct PictureCase {
    const char* why;
    const char* picture;
    Decimal value;
    const char* written;
};

constexpr std::int64_t kLowest = std::numeric_limits<std::int64_t>::min();

// clang-format off
const PictureCase kPictureCases[] = {
    // why                                      picture              value             written
    {"rates have one decimal at least",         "###,###,##0.0##",   {83544, 0},       "83,544.0"},
    {"zero keeps its forced digits",            "###,###,##0.0##",   {0, 0},           "0.0"},
    {"three decimals at most",                  "###,###,##0.0##",   {29970, 3},       "29.97"},
    {"all three decimals",                      "###,###,##0.0##",   {29971, 3},       "29.971"},
    {"below one",                               "###,###,##0.0##",   {5, 3},           "0.005"},
    {"half away from zero, upwards",            "###,###,##0",       {2500, 3},        "3"},
    {"half away from zero, downwards",          "###,###,##0",       {-2500, 3},       "-3"},
    {"just below a half",                       "###,###,##0",       {2499, 3},        "2"},
    {"a carry through all digits",              "###,###,##0",       {999500, 3},      "1,000"},
    {"a carry into an optional decimal",        "0.0##",             {19996, 4},       "2.0"},
    {"a rounded decimal keeps its zeros inside", "0.0##",            {10096, 4},       "1.01"},
    {"no sign on a number that rounds to zero", "##0",               {-499, 3},        "0"},
    {"a sign survives grouping",                "###,##0",           {-123456, 0},     "-123,456"},
    {"no bare point",                           "###,###,##0.##",    {7, 0},           "7"},
    {"optional decimals that are there",        "###,###,##0.##",    {725, 2},         "7.25"},
    {"a picture that groups by two",            "####,##0.###",      {1234567, 0},     "1,234,567"},
    {"a picture with a group of four",          "###,####,###,##0",  {12345678901, 0}, "12,345,678,901"},
    {"more digits than the picture",            "#,###,###,##0",     {1234567890123, 0}, "1,234,567,890,123"},
    {"exactly one group has no comma",          "#,###,###,##0",     {999, 0},         "999"},
    {"forced digits fill up, grouped",          "0,000",             {7, 0},           "0,007"},
    {"no comma, no groups",                     "###0.00",           {1234567, 0},     "1234567.00"},
    {"optional digit alone leaves zero out",    "#.##",              {0, 0},           ""},
    {"optional digit before decimals",          "#.##",              {25, 2},          ".25"},
    {"a rate that a double could not hold",     "###,###,###,##0",   {9007199254740993, 0}, "9,007,199,254,740,993"},
    {"the lowest number has a magnitude",       "0.0##",             {kLowest, 18},    "-9.223"},
};
// clang-format on

TEST(NumberPictures, WriteNumbers) {
    for (const PictureCase& c : kPictureCases)
        EXPECT_EQ(FormatPicture(c.picture, c.value), c.written) << c.why;
}

}  // namespace
}  // namespace app
