// Code words that are known from the published tables.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "codecs/common/bit_writer.h"
#include "codecs/wmv9/ac_codes.h"
#include "codecs/wmv9/bitplane.h"
#include "codecs/wmv9/dc_codes.h"
#include "codecs/wmv9/motion_vector_codes.h"
#include "codecs/wmv9/sequence_header.h"

namespace wmv9_conformance {

using namespace codecs::wmv9;
using codecs::BitWriter;
using codecs::Index;

namespace {

std::string BitsOf(BitWriter& out) {
    const std::size_t count = out.Size();
    out.Align();
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += (out.Bytes()[i / 8] >> (7 - i % 8) & 1) != 0 ? '1' : '0';
    return text;
}

enum AcSet {
    HighRateIntra,
    HighRateInter,
    LowIntra,
    LowInter,
    HighIntra,
    HighInter,
    MidIntra,
    MidInter
};

struct LevelCase {
    const char* why;
    AcSet set;
    bool last;
    std::uint8_t run;
    std::int16_t level;
    const char* bits;
};

// clang-format off
constexpr LevelCase kLevels[] = {
    // why                                 set            last  run level  bits
    {"the commonest of fine blocks",       HighRateIntra, false,  0,   1, "000"},
    {"the last one, negative",             HighRateIntra, true,   0,  -1, "11110001"},
    {"a level less the largest",           HighRateIntra, false,  0, -60, "1111010101011"},
    {"a level less the largest",           HighRateInter, false,  0, -60, "1110011111100011000001"},
    {"a run less the largest",             HighRateInter, false, 31,   1, "1110011010011000"},
    {"no code for a level in the tables",  LowIntra,      true,   2,   7, "00101100010001111000010000000000111"},
    {"a run less the largest",             LowIntra,      false, 31,   1, "001011001001101000"},
    {"a run less the largest, last",       LowInter,      true,  40,   2, "0000011011000001110111100"},
    {"the last one but small",             LowInter,      true,   1,  -4, "0000000010111111"},
    {"a level less the largest, last",     HighIntra,     true,   2,   7, "00100101010010111011110"},
    {"no code at all",                     HighIntra,     false, 20, -30, "0010010100000001111010100100000011110"},
    {"no code for so large a level",       HighInter,     false,  0, -60, "1011010010000001111000000100000111100"},
    {"a code of its own",                  MidIntra,      false,  3,   2, "000110110"},
    {"no code for so long a run",          MidIntra,      false, 31,   1, "00000110000001111011111000000000001"},
    {"a run less the largest",             MidInter,      false, 31,   1, "000001101011000"},
};
// clang-format on

TEST(WrittenCodes, OfLevels) {
    constexpr int kLargestLevel = 2047;
    for (const LevelCase& row : kLevels) {
        BitWriter out;
        AcWriter(out, kLargestLevel, true)
            .Put(AcCodes::All()[row.set], {row.level, row.run, row.last});
        EXPECT_EQ(BitsOf(out), row.bits) << row.why << ", set " << row.set;
    }
}

// The sizes of the fields stand in the first one only, and in another form for coarse quantisers.
TEST(WrittenCodes, OfLevelsWithoutCodesInARow) {
    constexpr int kLargestLevel = 255;
    BitWriter out;
    AcWriter writer(out, kLargestLevel, false);
    writer.Put(AcCodes::All()[LowInter], {-25, 30, false});
    writer.Put(AcCodes::All()[LowInter], {3, 45, true});
    EXPECT_EQ(BitsOf(out), "00000110100000000011011110100011001000001101001101101000000011");
}

struct DcCase {
    const char* why;
    int table;
    bool luma;
    int quantiser;
    int difference;
    const char* bits;
};

// clang-format off
constexpr DcCase kDc[] = {
    // why                            table luma  quantiser difference bits
    {"none",                              0, true,  1,    0, "1"},
    {"two more bits",                     0, true,  1,  -40, "0010010111"},
    {"not yet an escape",                 0, true,  1,  255, "00000110000001111011000100"},
    {"one more bit",                      1, true,  2,  118, "0000011110011011110"},
    {"an escape with one more bit",       1, true,  2,  255, "000001111001101001011001110111111110"},
    {"the largest without an escape",     1, true,  3,  118, "000001111001101001011001100"},
    {"the smallest with one",             1, true,  3, -119, "00000111100110100101100111011101111"},
    {"none, of chroma",                   1, false, 1,    0, "00"},
    {"two more bits, of chroma",          1, false, 1, -119, "1100111011101101"},
    {"an escape of chroma",               1, false, 3,  255, "1100011110110010010001111111111110"},
};
// clang-format on

TEST(WrittenCodes, OfDcDifferences) {
    for (const DcCase& row : kDc) {
        BitWriter out;
        const DcCode code = DcCodeOf(row.difference, row.quantiser);
        out.Put((row.luma ? kLumaDc : kChromaDc)[Index(row.table)][Index(code.symbol)]);
        out.Put(code.extra);
        EXPECT_EQ(BitsOf(out), row.bits) << row.why;
    }
}

struct VectorCase {
    const char* why;
    int table;
    bool halves;
    int range;
    int x;  // in halves or quarters
    int y;
    bool coded;
    const char* bits;
};

// clang-format off
constexpr VectorCase kVectors[] = {
    // why                                     table halves range  x    y   coded  bits
    {"none, but coded",                           2, false, 0,     0,   0, true,  "1"},
    {"one quarter",                               3, false, 0,     1,   0, false, "00000000000000000"},
    {"small ones",                                0, false, 0,    -3,   7, true,  "110000010000"},
    {"of the last class",                         0, false, 0,    31,  -2, false, "000010010000100000000011"},
    {"of the last class, in halves",              0, true,  0,    31,  -2, false, "00001001000010000000011"},
    {"the last classes both: an escape",          1, false, 0,   -94,  94, true,  "001011110111111010001001011110"},
    {"the same in a wider range",                 1, false, 1,   -94,  94, true,  "00101111011111110100010001011110"},
    {"the largest without an escape",             2, false, 0,   158, -15, false, "001000101111111111000001"},
    {"the same in halves, which is too large",    2, true,  0,   158, -15, false, "00100011101100111101110001"},
    {"the same in halves and a wider range",      3, true,  1,   158, -15, false, "0000000011011101001111011110001"},
};
// clang-format on

TEST(WrittenCodes, OfVectorDifferences) {
    for (const VectorCase& row : kVectors) {
        PictureHeader header;
        header.vector_table = row.table;
        header.vector_range = row.range;
        if (row.halves) header.mode = VectorMode::HalfBilinear;
        const int unit = row.halves ? 2 : 1;
        BitWriter out;
        PutVector(
            out, {static_cast<std::int16_t>(unit * row.x), static_cast<std::int16_t>(unit * row.y)},
            row.coded, header);
        EXPECT_EQ(BitsOf(out), row.bits) << row.why;
    }
}

TEST(WrittenCodes, OfMacroblocksWithoutVectors) {
    constexpr const char* kBits[4][2] = {{"001101", "111"},
                                         {"00101111001110", "11111"},
                                         {"00100011110", "00100111111"},
                                         {"0000001010", "1111"}};
    for (int table = 0; table < 4; ++table) {
        for (const bool coded : {false, true}) {
            PictureHeader header;
            header.vector_table = table;
            BitWriter out;
            PutIntra(out, coded, header);
            EXPECT_EQ(BitsOf(out), kBits[table][coded ? 1 : 0]) << "table " << table;
        }
    }
}

struct PlaneCase {
    const char* why;
    int width;
    const char* plane;  // rows one after the other
    PlaneCoding coding;
    const char* bits;
};

// clang-format off
constexpr PlaneCase kPlanes[] = {
    // why                                       width plane                           coding                            bits
    {"pairs, after a single one",                    5, "100000000001000",              {PlaneMode::Pairs, false},         "0101000001000"},
    {"pairs, inverted",                              4, "10000000100101000101",         {PlaneMode::Pairs, true},          "11010111111110110010011100100"},
    {"pairs of change",                              4, "10000000100101000101",         {PlaneMode::PairsOfChange, false}, "00011101000100101110101101"},
    {"pairs of change, inverted",                    7, "0000000000100100000010000001", {PlaneMode::PairsOfChange, true},  "1001100000011101010100000"},
    {"tiles of 2 by 3, and a column",                5, "100000000001000",              {PlaneMode::Tiles, false},         "011011011100"},
    {"tiles of 3 by 2, a column and a row",          4, "10000000100101000101",         {PlaneMode::Tiles, true},          "11100011011100010101101010111111"},
    {"tiles of change, of 3 by 2, and a row",        3, "010001100",                    {PlaneMode::TilesOfChange, false}, "00001000001011011"},
    {"tiles of change, inverted",                    7, "0000000000100100000010000001", {PlaneMode::TilesOfChange, true},  "100010111000011010100111000"},
    {"rows",                                         5, "100000000001000",              {PlaneMode::Rows, false},          "00101100000101000"},
    {"columns, inverted",                            4, "10000000100101000101",         {PlaneMode::Columns, true},        "1011101011111100111111111010"},
};
// clang-format on

TEST(WrittenCodes, OfPlanesOfBits) {
    for (const PlaneCase& row : kPlanes) {
        const std::string bits = row.plane;
        BitPlane plane(row.width, static_cast<int>(bits.size()) / row.width);
        for (int i = 0; i < static_cast<int>(bits.size()); ++i)
            plane.Set(i % row.width, i / row.width, bits[Index(i)] == '1');
        BitWriter out;
        WritePlane(out, plane, row.coding);
        EXPECT_EQ(BitsOf(out), row.bits) << row.why;
        EXPECT_EQ(PlaneBits(plane, row.coding), static_cast<int>(std::string(row.bits).size()));
    }
}

TEST(WrittenCodes, OfSequences) {
    SequenceHeader main;
    main.rate_hint = 7;
    main.bits_hint = 10;
    EXPECT_THAT(main.Bytes(), testing::ElementsAre(0x4E, 0xA9, 0x08, 0x0D));
    main.extended_vectors = true;
    main.varying_quantiser = true;
    main.overlap = true;
    main.most_b_pictures = 2;
    EXPECT_THAT(main.Bytes(), testing::ElementsAre(0x4E, 0xA9, 0x5A, 0x2D));
    SequenceHeader simple;
    simple.profile = Profile::Simple;
    simple.loop_filter = false;
    simple.short_chroma_vectors = true;
    simple.rate_hint = 0;
    simple.bits_hint = 0;
    EXPECT_THAT(simple.Bytes(), testing::ElementsAre(0x00, 0x01, 0x88, 0x0D));
}

}  // namespace
}  // namespace wmv9_conformance
