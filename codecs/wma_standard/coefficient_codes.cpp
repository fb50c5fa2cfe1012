#include "codecs/wma_standard/coefficient_codes.h"

#include <cassert>
#include <cstdlib>

#include "codecs/common/index.h"
#include "codecs/wma/floor_log2.h"

namespace codecs::wma_standard {
namespace {

int MagnitudeBits(int gain) {
    if (gain < 15) return 13;
    if (gain < 32) return 12;
    if (gain < 40) return 11;
    return gain < 45 ? 10 : 9;
}

// Calls `use(run, level)` for all that are not zero. Whether zeros follow the last.
template <typename Use>
bool ForEachLevel(std::span<const std::int16_t> levels, const Use& use) {
    int run = 0;
    for (const std::int16_t level : levels) {
        if (level == 0) {
            ++run;
            continue;
        }
        use(run, level);
        run = 0;
    }
    return run > 0;
}

}  // namespace

int MostMagnitude(int gain) { return (1 << MagnitudeBits(gain)) - 1; }

CoefficientCodes::CoefficientCodes(const CoefficientTable& table, int frame_samples)
    : table_(table), run_bits_(wma::FloorLog2(frame_samples)) {
    assert(table.runs.size() < kMagnitudes);
    int symbol = kFirstSymbol;
    for (std::size_t i = 0; i < table.runs.size(); ++i) {
        magnitudes_[i + 1] = {symbol, table.runs[i]};
        symbol += table.runs[i];
    }
    for (int i = 0; i < symbol; ++i)
        lengths_.push_back(static_cast<std::uint8_t>(table.CodeAt(i).length + 1));
}

int CoefficientCodes::Bits(std::span<const std::int16_t> levels, int gain) const {
    const int escape = lengths_[kEscapeSymbol] + MagnitudeBits(gain) + run_bits_;
    int bits = 0;
    const bool zeros_follow = ForEachLevel(levels, [&](int run, int level) {
        const int symbol = SymbolFor(run, std::abs(level));
        bits += symbol == kEscapeSymbol ? escape : lengths_[Index(symbol)];
    });
    return zeros_follow ? bits + lengths_[kEndSymbol] - 1 : bits;
}

void CoefficientCodes::Write(std::span<const std::int16_t> levels, int gain,
                             BitWriter& writer) const {
    const bool zeros_follow = ForEachLevel(levels, [&](int run, int level) {
        const int symbol = SymbolFor(run, std::abs(level));
        writer.Put(table_.CodeAt(symbol));
        if (symbol == kEscapeSymbol) {
            writer.Put(static_cast<std::uint32_t>(std::abs(level)), MagnitudeBits(gain));
            writer.Put(static_cast<std::uint32_t>(run), run_bits_);
        }
        writer.Put(level > 0 ? 1 : 0, 1);
    });
    if (zeros_follow) writer.Put(table_.CodeAt(kEndSymbol));
}

}  // namespace codecs::wma_standard
