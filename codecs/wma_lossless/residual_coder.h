// Codes what the filters leave over, as Rice codes whose length follows a running mean.
#pragma once

#include <cstdint>
#include <span>

#include "codecs/common/bit_writer.h"

namespace codecs::wma_lossless {

constexpr int kSpeeds = 8;  // of the running mean: 0 to 7

/// One channel's, from a frame where the stream can be entered to the next.
class ResidualCoder {
  public:
    explicit ResidualCoder(int speed) : speed_(speed) {}

    /// The first tile: writes `mean` and the first value as they are, in so many bits.
    void WriteFirst(std::span<const std::int32_t> values, std::uint32_t mean, int mean_bits,
                    int value_bits, BitWriter& out);
    void Write(std::span<const std::int32_t> values, BitWriter& out);

    /// As those, but only counts.
    std::int64_t CountFirst(std::span<const std::int32_t> values, std::uint32_t mean);
    std::int64_t Count(std::span<const std::int32_t> values);

  private:
    template <class Out>
    void Code(std::span<const std::int32_t> values, Out& out);

    int speed_;
    std::uint32_t sum_ = 0;  // the mean times 2 ^ (speed + 1)
};

/// The mean that the first tile of a channel begins with: half of the average of its values, which
/// are folded so that negative ones are odd. Has `bits` bits at most.
std::uint32_t FirstMean(std::span<const std::int32_t> values, int bits);

}  // namespace codecs::wma_lossless
