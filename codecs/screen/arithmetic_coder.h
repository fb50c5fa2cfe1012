// Writes numbers as parts of an interval, in bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace codecs::screen {

/// An arithmetic coder that divides intervals without multiplying (L. Stuiver, A. Moffat:
/// "Piecewise integer mapping for arithmetic coding", 1998). Appends to `out`, which nothing else
/// may touch until Finish.
class ArithmeticCoder {
  public:
    explicit ArithmeticCoder(std::vector<std::uint8_t>& out) : out_(out) {}

    /// The part from `low` to below `high` of `total`, which is at most 16383 of a model and at
    /// most 4096 of a number.
    void Interval(std::uint32_t low, std::uint32_t high, std::uint32_t total);
    void Bit(bool value);
    /// Of `count` that are equally likely, one.
    void Number(int value, int count) {
        Interval(static_cast<std::uint32_t>(value), static_cast<std::uint32_t>(value) + 1,
                 static_cast<std::uint32_t>(count));
    }
    /// The bytes that a decoder takes for the end of this stream, so that another can follow.
    void Finish();

  private:
    void Normalise();
    void Emit(std::uint32_t value);

    std::vector<std::uint8_t>& out_;
    std::uint32_t low_ = 0;
    std::uint32_t high_ = 0xFFFFFF;
    bool owes_ = false;  // half a unit of the byte written last stands in the next one
};

}  // namespace codecs::screen
