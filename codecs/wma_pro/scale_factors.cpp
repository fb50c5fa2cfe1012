#include "codecs/wma_pro/scale_factors.h"

#include <cstdint>
#include <cstdlib>

#include "codecs/common/index.h"
#include "codecs/wma_pro/code_tables.h"

namespace codecs::wma_pro {

void WriteWholeFactors(std::span<const int> factors, int step_db, BitWriter& writer) {
    writer.Put(static_cast<std::uint32_t>(step_db - kLeastScaleStep), 2);
    int previous = factors.front();
    for (const int factor : factors) {
        writer.Put(ScaleFactorDifferenceCode(factor - previous));
        previous = factor;
    }
}

void WriteFactorChanges(std::span<const int> before, std::span<const int> factors,
                        BitWriter& writer) {
    constexpr int kLevelBits = 8;
    constexpr int kRunBits = 5;
    const RunLevelCodes& codes = ScaleFactorChangeCodes();
    int run = 0;
    for (std::size_t b = 0; b < factors.size(); ++b) {
        const int change = factors[b] - before[b];
        if (change == 0) {
            ++run;
            continue;
        }
        const int symbol = codes.SymbolFor(run, std::abs(change));
        writer.Put(codes.CodeAt(symbol));
        if (symbol == RunLevelCodes::kEscapeSymbol) {
            writer.Put(static_cast<std::uint32_t>(std::abs(change)), kLevelBits);
            writer.Put(static_cast<std::uint32_t>(run), kRunBits);
        }
        writer.Put(change > 0 ? 1 : 0, 1);
        run = 0;
    }
    if (run > 0) writer.Put(codes.CodeAt(RunLevelCodes::kEndSymbol));
}

std::vector<int> ResampleFactors(std::span<const int> factors, std::span<const int> from_ends,
                                 int from_size, std::span<const int> to_ends, int to_size) {
    std::vector<int> resampled;
    int begin = 0;
    for (const int end : to_ends) {
        // Where the band's middle lies; scaled by the sizes both sides are whole numbers.
        const std::int64_t middle = (std::int64_t{begin} + end - 1) * from_size / 2;
        std::size_t from = 0;
        while (std::int64_t{from_ends[from]} * to_size < middle) ++from;
        resampled.push_back(factors[from]);
        begin = end;
    }
    return resampled;
}

}  // namespace codecs::wma_pro
