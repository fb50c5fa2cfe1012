#include "codecs/wma_pro/coefficient_codes.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "codecs/common/index.h"
#include "codecs/wma/floor_log2.h"
#include "codecs/wma_pro/code_tables.h"

namespace codecs::wma_pro {
namespace {

constexpr int kGroup = 4;

// Numbers without a code of their own: as many bits as they need, of four widths.
constexpr int kLargeBits[] = {8, 16, 24, 31};

int LargeWidth(int value) {
    int width = 0;
    while (width < 3 && value >> kLargeBits[width] != 0) ++width;
    return width;
}
int LargeBits(int value) {
    const int width = LargeWidth(value);
    return std::min(width + 1, 3) + kLargeBits[width];
}
void PutLarge(int value, BitWriter& writer) {
    const int width = LargeWidth(value);
    writer.Put(width < 3 ? (1U << (width + 1)) - 2 : 7, std::min(width + 1, 3));
    writer.Put(static_cast<std::uint32_t>(value), kLargeBits[width]);
}

// The runs behind an escape that have few bits.
constexpr int kShortRuns = 4;

// Symbols and bits of magnitudes that go together, with those of their signs.
constexpr int kFourRange = kMostFourSum + 1;
constexpr int kTwoRange = kMostTwoSum + 1;
constexpr int FourPlace(int a, int b, int c, int d) {
    return ((a * kFourRange + b) * kFourRange + c) * kFourRange + d;
}

struct VectorTables {
    static constexpr std::size_t kFours = Index(kFourRange * FourPlace(1, 0, 0, 0));
    static constexpr std::size_t kTwos = Index(kTwoRange * kTwoRange);

    std::array<std::int16_t, kFours> four_symbols{};
    std::array<std::uint8_t, kFours> four_bits{};
    std::array<std::int16_t, kTwos> two_symbols{};
    std::array<std::uint8_t, kTwos> two_bits{};
    std::array<std::uint8_t, kMostOne + 1> one_bits{};

    VectorTables() {
        int symbol = 0;
        for (int a = 0; a <= kMostFourSum; ++a)
            for (int b = 0; a + b <= kMostFourSum; ++b)
                for (int c = 0; a + b + c <= kMostFourSum; ++c)
                    for (int d = 0; a + b + c + d <= kMostFourSum; ++d) {
                        const std::size_t place = Index(FourPlace(a, b, c, d));
                        const int signs = (a > 0) + (b > 0) + (c > 0) + (d > 0);
                        four_symbols[place] = static_cast<std::int16_t>(symbol);
                        four_bits[place] =
                            static_cast<std::uint8_t>(FourCode(symbol).length + signs);
                        ++symbol;
                    }
        symbol = 0;
        for (int a = 0; a <= kMostTwoSum; ++a)
            for (int b = 0; a + b <= kMostTwoSum; ++b) {
                const std::size_t place = Index(a * kTwoRange + b);
                two_symbols[place] = static_cast<std::int16_t>(symbol);
                two_bits[place] =
                    static_cast<std::uint8_t>(TwoCode(symbol).length + (a > 0) + (b > 0));
                ++symbol;
            }
        for (int a = 0; a <= kMostOne; ++a)
            one_bits[Index(a)] = static_cast<std::uint8_t>(OneCode(a).length + (a > 0));
    }
};

const VectorTables& Vectors() {
    static const VectorTables tables;
    return tables;
}

int OneBits(int magnitude) {
    if (magnitude <= kMostOne) return Vectors().one_bits[Index(magnitude)];
    return OneCode(kOneEscape).length + LargeBits(magnitude - kOneEscape) + 1;
}

int TwoBits(int a, int b) {
    if (a + b <= kMostTwoSum) return Vectors().two_bits[Index(a * kTwoRange + b)];
    return TwoCode(kTwoEscape).length + OneBits(a) + OneBits(b);
}

int FourBits(const std::array<int, kGroup>& m) {
    if (m[0] + m[1] + m[2] + m[3] <= kMostFourSum)
        return Vectors().four_bits[Index(FourPlace(m[0], m[1], m[2], m[3]))];
    return FourCode(kFourEscape).length + TwoBits(m[0], m[1]) + TwoBits(m[2], m[3]);
}

void WriteTwo(int a, int b, BitWriter& writer) {
    if (a + b <= kMostTwoSum) {
        writer.Put(TwoCode(Vectors().two_symbols[Index(a * kTwoRange + b)]));
        return;
    }
    writer.Put(TwoCode(kTwoEscape));
    for (const int magnitude : {a, b}) {
        writer.Put(OneCode(std::min(magnitude, kOneEscape)));
        if (magnitude >= kOneEscape) PutLarge(magnitude - kOneEscape, writer);
    }
}

void WriteFour(const std::array<int, kGroup>& m, BitWriter& writer) {
    if (m[0] + m[1] + m[2] + m[3] <= kMostFourSum) {
        writer.Put(FourCode(Vectors().four_symbols[Index(FourPlace(m[0], m[1], m[2], m[3]))]));
        return;
    }
    writer.Put(FourCode(kFourEscape));
    WriteTwo(m[0], m[1], writer);
    WriteTwo(m[2], m[3], writer);
}

int LevelAt(std::span<const int> levels, int place) {
    return Index(place) < levels.size() ? levels[Index(place)] : 0;
}

std::array<int, kGroup> Magnitudes(std::span<const int> levels, int first) {
    std::array<int, kGroup> magnitudes{};
    for (int i = 0; i < kGroup; ++i) magnitudes[Index(i)] = std::abs(LevelAt(levels, first + i));
    return magnitudes;
}

// Bits of the usual runs and levels, with the sign's; 0 = none.
struct RunLevelTables {
    static constexpr int kLevels = 64;
    static constexpr int kRuns = 160;
    std::array<std::array<std::array<std::uint8_t, kRuns>, kLevels>, kCoefficientTables> bits{};

    RunLevelTables() {
        for (int table = 0; table < kCoefficientTables; ++table) {
            const RunLevelCodes& codes = CoefficientRunLevelCodes(table);
            for (int level = 1; level < kLevels; ++level)
                for (int run = 0; run < kRuns; ++run) {
                    const int symbol = codes.SymbolFor(run, level);
                    if (symbol != RunLevelCodes::kEscapeSymbol)
                        bits[Index(table)][Index(level)][Index(run)] =
                            static_cast<std::uint8_t>(codes.CodeAt(symbol).length + 1);
                }
        }
    }
};

const RunLevelTables& RunLevels() {
    static const RunLevelTables tables;
    return tables;
}

}  // namespace

CoefficientCodes::CoefficientCodes(int block_size)
    : block_size_(block_size),
      count_bits_(wma::FloorLog2((block_size + 3) / kGroup) + 1),
      long_run_bits_(wma::FloorLog2(block_size - 1) + 1),
      prefix_bits_(Index(block_size / kGroup + 1)) {}

int CoefficientCodes::EscapeBits(int table, int run, int magnitude) const {
    const int symbol = CoefficientRunLevelCodes(table).CodeAt(RunLevelCodes::kEscapeSymbol).length;
    const int run_bits = run == 0 ? 1 : run <= kShortRuns ? 4 : 3 + long_run_bits_;
    return symbol + LargeBits(magnitude) + run_bits + 1;
}

int CoefficientCodes::RunLevelBits(int table, int run, int magnitude) const {
    if (magnitude < RunLevelTables::kLevels && run < RunLevelTables::kRuns) {
        const int bits = RunLevels().bits[Index(table)][Index(magnitude)][Index(run)];
        if (bits > 0) return bits;
    }
    return EscapeBits(table, run, magnitude);
}

CoefficientPlan CoefficientCodes::Plan(std::span<const int> levels) {
    int last = static_cast<int>(levels.size()) - 1;
    while (levels[Index(last)] == 0) --last;
    const int groups = last / kGroup + 1;
    int prefix = 0;
    for (int group = 0; group < groups; ++group) {
        prefix_bits_[Index(group)] = prefix;
        prefix += FourBits(Magnitudes(levels, group * kGroup));
    }

    // From the end: what all behind a place takes as runs and levels.
    const auto end_bits = [&](int table, int from) {
        return from == block_size_
                   ? 0
                   : int{CoefficientRunLevelCodes(table).CodeAt(RunLevelCodes::kEndSymbol).length};
    };
    CoefficientPlan best{std::numeric_limits<int>::max(), 0, 0};
    for (int table = 0; table < kCoefficientTables; ++table) {
        const auto consider = [&](int bits, int groups_before) {
            if (bits < best.bits) best = {bits, table, groups_before * kGroup};
        };
        consider(prefix + end_bits(table, groups * kGroup), groups);
        int next = last;  // the first that is not zero, as far as has been looked
        int next_magnitude = std::abs(levels[Index(last)]);
        int behind = end_bits(table, last + 1);
        for (int place = last - 1, group = groups - 1; group >= 0; --group) {
            for (; place >= group * kGroup; --place) {
                const int magnitude = std::abs(levels[Index(place)]);
                if (magnitude == 0) continue;
                behind += RunLevelBits(table, next - place - 1, next_magnitude);
                next = place;
                next_magnitude = magnitude;
            }
            consider(prefix_bits_[Index(group)] + behind +
                         RunLevelBits(table, next - group * kGroup, next_magnitude),
                     group);
        }
    }
    ++best.bits;  // that says which table
    return best;
}

void CoefficientCodes::WriteRunLevel(int table, int run, int level, BitWriter& writer) const {
    const RunLevelCodes& codes = CoefficientRunLevelCodes(table);
    const int magnitude = std::abs(level);
    const int symbol = codes.SymbolFor(run, magnitude);
    writer.Put(codes.CodeAt(symbol));
    if (symbol == RunLevelCodes::kEscapeSymbol) {
        PutLarge(magnitude, writer);
        if (run == 0) {
            writer.Put(0b0, 1);
        } else if (run <= kShortRuns) {
            writer.Put(0b10, 2);
            writer.Put(static_cast<std::uint32_t>(run - 1), 2);
        } else {
            writer.Put(0b110, 3);
            writer.Put(static_cast<std::uint32_t>(run - kShortRuns), long_run_bits_);
        }
    }
    writer.Put(level > 0 ? 1 : 0, 1);
}

void CoefficientCodes::Write(std::span<const int> levels, const CoefficientPlan& plan,
                             BitWriter& writer) const {
    writer.Put(static_cast<std::uint32_t>(plan.table), 1);
    for (int first = 0; first < plan.vector; first += kGroup) {
        WriteFour(Magnitudes(levels, first), writer);
        for (int i = 0; i < kGroup; ++i) {
            const int level = LevelAt(levels, first + i);
            if (level != 0) writer.Put(level > 0 ? 1 : 0, 1);
        }
    }
    int after = plan.vector;  // behind all that is written
    for (int place = after; place < static_cast<int>(levels.size()); ++place) {
        if (levels[Index(place)] == 0) continue;
        WriteRunLevel(plan.table, place - after, levels[Index(place)], writer);
        after = place + 1;
    }
    if (after < block_size_)
        writer.Put(CoefficientRunLevelCodes(plan.table).CodeAt(RunLevelCodes::kEndSymbol));
}

}  // namespace codecs::wma_pro
