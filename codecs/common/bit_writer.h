// Puts bits together to bytes, the most significant first.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace codecs {

/// The lowest `length` bits of `bits`.
struct Code {
    std::uint32_t bits = 0;
    std::uint8_t length = 0;
};

/// Allocates where it has to hold more than ever before.
class BitWriter {
  public:
    void Clear() {
        bytes_.clear();
        pending_ = 0;
        count_ = 0;
    }
    /// 0 to 32 of the lowest bits of `value`; what stands above them is ignored.
    void Put(std::uint32_t value, int bits) {
        pending_ = (pending_ << bits) | (value & ((std::uint64_t{1} << bits) - 1));
        count_ += bits;
        while (count_ >= 8) {
            count_ -= 8;
            bytes_.push_back(static_cast<std::uint8_t>(pending_ >> count_));
        }
    }
    void Put(Code code) { Put(code.bits, code.length); }
    /// `count` bits of `bytes` from bit `from` on.
    void Put(std::span<const std::uint8_t> bytes, int from, int count) {
        while (count > 0) {
            if (from % 8 == 0 && count >= 16) {
                const auto at = static_cast<std::size_t>(from / 8);
                Put(static_cast<std::uint32_t>(bytes[at] << 8 | bytes[at + 1]), 16);
                from += 16;
                count -= 16;
                continue;
            }
            const int in_byte = std::min(8 - from % 8, count);
            Put(static_cast<std::uint32_t>(bytes[static_cast<std::size_t>(from / 8)]) >>
                    (8 - from % 8 - in_byte),
                in_byte);
            from += in_byte;
            count -= in_byte;
        }
    }
    /// Fills the last byte with zeros.
    void Align() {
        if (count_ > 0) Put(0, 8 - count_);
    }
    /// Bits so far.
    std::size_t Size() const { return bytes_.size() * 8 + static_cast<std::size_t>(count_); }
    /// Whole bytes so far.
    std::span<const std::uint8_t> Bytes() const { return bytes_; }

  private:
    std::vector<std::uint8_t> bytes_;
    std::uint64_t pending_ = 0;
    int count_ = 0;  // of pending bits, below 8
};

}  // namespace codecs
