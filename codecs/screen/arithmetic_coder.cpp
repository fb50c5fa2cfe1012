#include "codecs/screen/arithmetic_coder.h"

#include <bit>

namespace codecs::screen {

void ArithmeticCoder::Interval(std::uint32_t low, std::uint32_t high, std::uint32_t total) {
    const std::uint32_t range = high_ - low_ + 1;
    int shift = static_cast<int>(std::bit_width(range)) - static_cast<int>(std::bit_width(total));
    if (total << shift > range) --shift;
    const std::uint32_t split = 2 * (total << shift) - range;
    const auto map = [&](std::uint32_t value) {
        return value <= split ? value : split + 2 * (value - split);
    };
    high_ = low_ + map(high << shift) - 1;
    low_ += map(low << shift);
    Normalise();
}

void ArithmeticCoder::Bit(bool value) {
    const std::uint32_t half = (high_ - low_ + 1) >> 1;
    if (value)
        low_ += half;
    else
        high_ = low_ + half - 1;
    Normalise();
}

void ArithmeticCoder::Normalise() {
    while ((high_ >> 15) - (low_ >> 15) < 2) {
        Emit((low_ >> 16) + (owes_ ? 0x80 : 0));
        owes_ = ((low_ ^ high_) & 0x10000) != 0;
        if (owes_) {
            low_ ^= 0x8000;
            high_ ^= 0x8000;
        }
        low_ = (low_ & 0xFFFF) << 8;
        high_ = (high_ & 0xFFFF) << 8 | 0xFF;
    }
}

void ArithmeticCoder::Emit(std::uint32_t value) {
    if (value > 0xFF)
        for (auto byte = out_.rbegin(); ++*byte == 0;) ++byte;
    out_.push_back(static_cast<std::uint8_t>(value));
}

void ArithmeticCoder::Finish() {
    if ((high_ >> 16) - (low_ >> 16) >= 2) {
        Emit((low_ >> 16) + 1 + (owes_ ? 0x80 : 0));
        return;
    }
    const std::uint32_t end = (low_ >> 8) + 1 + (owes_ ? 0x8000 : 0);
    Emit(end >> 8);
    out_.push_back(static_cast<std::uint8_t>(end));
}

}  // namespace codecs::screen
