// How differences of DC values are written (SMPTE ST 421, 8.1.3.1).
#pragma once

#include <array>

#include "codecs/common/bit_writer.h"
#include "codecs/common/index.h"
#include "codecs/wmv9/tables.h"

namespace codecs::wmv9 {

/// A difference as its symbol (DCCOEF) and the bits after it (DCCOEF_ESC), the sign (DCSIGN) last.
struct DcCode {
    int symbol = 0;
    Code extra;
};

constexpr DcCode DcCodeOf(int difference, int quantiser) {
    const int size = difference < 0 ? -difference : difference;
    if (size == 0) return {};
    const int more = quantiser == 1 ? 2 : quantiser == 2 ? 1 : 0;
    const int symbol = (size + (1 << more) - 1) >> more;
    const auto sign = static_cast<std::uint32_t>(difference < 0 ? 1 : 0);
    if (symbol >= kDcEscape)
        return {kDcEscape,
                {static_cast<std::uint32_t>(size) << 1 | sign,
                 static_cast<std::uint8_t>(8 + more + 1)}};
    const auto low = static_cast<std::uint32_t>((size + (1 << more) - 1) & ((1 << more) - 1));
    return {symbol, {low << 1 | sign, static_cast<std::uint8_t>(more + 1)}};
}

inline int DcBits(int difference, int quantiser, const std::array<Code, 120>& table) {
    const DcCode code = DcCodeOf(difference, quantiser);
    return table[Index(code.symbol)].length + code.extra.length;
}

}  // namespace codecs::wmv9
