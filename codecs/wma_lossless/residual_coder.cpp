#include "codecs/wma_lossless/residual_coder.h"

#include <algorithm>
#include <bit>

namespace codecs::wma_lossless {
namespace {

// From this quotient on its length is written instead of as many ones.
constexpr std::uint32_t kLongQuotient = 32;

std::uint32_t Folded(std::int32_t value) {
    return (static_cast<std::uint32_t>(value) << 1) ^ static_cast<std::uint32_t>(value >> 31);
}

// Bits that a number needs.
int Width(std::uint32_t number) { return 32 - std::countl_zero(number); }

int LongQuotientBits(std::uint32_t beyond) { return std::max(1, Width(beyond)); }

class Writing {
  public:
    explicit Writing(BitWriter& out) : out_(out) {}
    void Put(std::uint32_t quotient, std::uint32_t rest, int rest_bits) {
        if (quotient < kLongQuotient) {
            out_.Put(~std::uint32_t{0}, static_cast<int>(quotient));
            out_.Put(0, 1);
        } else {
            const std::uint32_t beyond = quotient - kLongQuotient;
            const int bits = LongQuotientBits(beyond);
            out_.Put(~std::uint32_t{0}, static_cast<int>(kLongQuotient));
            out_.Put(0, 1);
            out_.Put(static_cast<std::uint32_t>(bits - 1), 5);
            out_.Put(beyond, bits);
        }
        out_.Put(rest, rest_bits);
    }

  private:
    BitWriter& out_;
};

class Counting {
  public:
    void Put(std::uint32_t quotient, std::uint32_t /*rest*/, int rest_bits) {
        bits_ += rest_bits + 1;
        bits_ += quotient < kLongQuotient
                     ? std::int64_t{quotient}
                     : std::int64_t{kLongQuotient} + 5 + LongQuotientBits(quotient - kLongQuotient);
    }
    std::int64_t Bits() const { return bits_; }

  private:
    std::int64_t bits_ = 0;
};

}  // namespace

template <class Out>
void ResidualCoder::Code(std::span<const std::int32_t> values, Out& out) {
    std::uint32_t sum = sum_;
    for (const std::int32_t value : values) {
        const std::uint32_t folded = Folded(value);
        const std::uint32_t mean = (sum + (1U << speed_)) >> (speed_ + 1);
        const int rest_bits = mean <= 1 ? 0 : Width(mean - 1);
        out.Put(rest_bits < 32 ? folded >> rest_bits : 0, folded, rest_bits);
        sum += folded - (sum >> speed_);
    }
    sum_ = sum;
}

void ResidualCoder::WriteFirst(std::span<const std::int32_t> values, std::uint32_t mean,
                               int mean_bits, int value_bits, BitWriter& out) {
    sum_ = mean << (speed_ + 1);
    out.Put(mean, mean_bits);
    out.Put(static_cast<std::uint32_t>(values[0]), value_bits);
    Write(values.subspan(1), out);
}

void ResidualCoder::Write(std::span<const std::int32_t> values, BitWriter& out) {
    Writing writing(out);
    Code(values, writing);
}

std::int64_t ResidualCoder::CountFirst(std::span<const std::int32_t> values, std::uint32_t mean) {
    sum_ = mean << (speed_ + 1);
    return Count(values.subspan(1));
}

std::int64_t ResidualCoder::Count(std::span<const std::int32_t> values) {
    Counting counting;
    Code(values, counting);
    return counting.Bits();
}

std::uint32_t FirstMean(std::span<const std::int32_t> values, int bits) {
    std::uint64_t sum = 0;
    for (const std::int32_t value : values) sum += Folded(value);
    const std::uint64_t half = sum / (2 * values.size());
    return static_cast<std::uint32_t>(std::min(half, (std::uint64_t{1} << bits) - 1));
}

}  // namespace codecs::wma_lossless
