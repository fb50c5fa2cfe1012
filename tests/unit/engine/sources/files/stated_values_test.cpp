// Files that state what is not so: where they end, and at which times their packets are.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "engine/sources/files/cut_off.h"
#include "engine/sources/files/source_times.h"
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

// ---- Which leaps of times are counted on as if they were not there

constexpr MediaKind kA = MediaKind::Audio;
constexpr MediaKind kV = MediaKind::Video;
constexpr std::int64_t kHour = 3'600'000;
constexpr std::int64_t kYears = 4'000'000'000'000'000;

struct Step {
    MediaKind kind;
    std::int64_t dts_ms;
    std::int64_t expected_ms;
    std::int64_t duration_ms = 1000;
};

struct TimesCase {
    const char* name;
    std::int64_t length_ms;  // as stated; 0 = not at all
    bool is_spliced;
    std::vector<Step> steps;
    std::int64_t leap_ms;  // told of; 0 = none
};

class SourceTimesTable : public testing::TestWithParam<TimesCase> {};

TEST_P(SourceTimesTable, CountsOn) {
    const TimesCase& row = GetParam();
    SourceTimes times({}, {}, Ms(row.length_ms), row.is_spliced);
    for (const Step& step : row.steps) {
        const Ticks stamp = std::abs(step.dts_ms) >= kYears
                                ? Ticks{std::numeric_limits<std::int64_t>::max() - 1}
                                : Ms(step.dts_ms);
        PacketTimes packet{stamp, stamp, Ms(step.duration_ms)};
        times.Correct(step.kind, packet);
        EXPECT_EQ(packet.dts->Milliseconds(), step.expected_ms) << "stamp " << step.dts_ms;
        EXPECT_EQ(packet.pts, packet.dts);
    }
    ASSERT_EQ(times.FirstLeap().has_value(), row.leap_ms != 0);
    if (row.leap_ms == 0 || std::abs(row.leap_ms) >= kYears) return;
    EXPECT_EQ(times.FirstLeap()->by.Milliseconds(), row.leap_ms);
}

// clang-format off
const TimesCase kCases[] = {
    {"goes_on", 4000, false, {{kA, 0, 0}, {kV, 0, 0}, {kA, 1000, 1000}, {kV, 1040, 1040}}, 0},
    {"gap_that_the_length_explains", 2 * kHour, false, {{kA, 0, 0}, {kA, kHour, kHour}}, 0},
    {"gap_beyond_the_length", 4000, false, {{kA, 0, 0}, {kA, kHour, 1000}, {kA, kHour + 1000, 2000}}, kHour - 1000},
    {"gap_of_days_whatever_the_length_says", kYears, false, {{kA, 0, 0}, {kA, 25 * kHour, 1000}}, 25 * kHour - 1000},
    {"gap_where_the_other_stream_is_too", 0, false, {{kA, 0, 0}, {kV, 0, 0}, {kA, 9000, 9000}, {kA, 18'000, 18'000}, {kV, 19'000, 19'000}}, 0},
    {"one_broken_stamp_and_back", 9000, false, {{kA, 0, 0}, {kA, kHour, 1000}, {kA, 2000, 2000}, {kA, 3000, 3000}}, kHour - 1000},
    {"years", 9000, false, {{kV, 0, 0}, {kV, kYears, 1000}, {kV, 2000, 2000}}, kYears},
    {"first_time_of_years_in_one_stream", 9000, false, {{kA, 0, 0}, {kV, kYears, 0}, {kA, 1000, 1000}, {kV, kYears, 1000}}, kYears},
    {"splice_leads_both_streams_by_the_same", 0, true,
     {{kA, 0, 0}, {kV, 40, 40}, {kA, 50'040, 1000}, {kV, 50'080, 1040}, {kA, 51'040, 2000}}, 49'040},
    {"splice_back", 0, true, {{kA, 90'000, 0}, {kA, 91'000, 1000}, {kA, 0, 2000}}, 90'000},
    {"packets_that_state_too_long_a_length", 0, false, {{kV, 0, 0, 2247}, {kV, 100, 100, 2247}, {kV, 200, 200, 2247}}, 0},
    {"length_of_a_packet_that_leads_nowhere", 4000, false, {{kV, 0, 0, kYears / 1000}, {kV, 40, 40, 40}}, 0},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Cases, SourceTimesTable, testing::ValuesIn(kCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(SourceTimes, LeavesTheSeekedStartAlone) {
    SourceTimes times({}, Ms(600'000), {}, false);
    PacketTimes packet{Ms(599'500), Ms(599'500), Ms(20)};
    times.Correct(kV, packet);
    EXPECT_EQ(packet.dts, Ms(599'500));
    EXPECT_FALSE(times.FirstLeap());
}

TEST(SourceTimes, DropsATimeOfShowingFarFromTheDecodingTime) {
    SourceTimes times({}, {}, Ms(9000), false);
    PacketTimes packet{Ms(kHour), Ms(0), Ms(40)};
    times.Correct(kV, packet);
    EXPECT_EQ(packet.dts, Ms(0));
    EXPECT_FALSE(packet.pts);
}

TEST(SourceTimes, TakesLateDecodingTimesForNoLeap) {
    SourceTimes times({}, {}, Ms(9000), false);
    PacketTimes shown{Ms(2000), {}, Ms(1000)};
    times.Correct(kV, shown);
    PacketTimes both{Ms(3000), Ms(1000), Ms(1000)};
    times.Correct(kV, both);
    EXPECT_EQ(both.dts, Ms(1000));
    EXPECT_FALSE(times.FirstLeap());
}

}  // namespace
}  // namespace engine
