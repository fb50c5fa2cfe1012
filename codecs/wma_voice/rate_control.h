// How much a bit is worth, so that a stream keeps its rate.
#pragma once

#include <cstdint>

#include "codecs/wma_voice/stream_format.h"

namespace codecs::wma_voice {

/// One thread. What is saved in pauses is spent on what is harder to tell: a stream may be ahead of
/// its rate for a while, or behind it.
class RateControl {
  public:
    explicit RateControl(const StreamFormat& format);

    /// What a bit more has to improve a frame, in dB.
    double DbPerBit() const { return db_per_bit_; }
    /// The most that the next superframe may take.
    int MostBits() const;
    /// One more superframe has been written.
    /// @param bits  that all packets take up to here
    void Wrote(std::int64_t bits);
    /// Bits that must be filled, so that the rate is kept; below 0: none.
    double Missing() const;

  private:
    double Leeway() const;

    double bit_rate_;
    double superframe_bits_;
    double superframe_seconds_;
    std::int64_t superframes_ = 0;
    double balance_ = 0;  // bits that were saved
    double log_worth_;    // of the mean over the last seconds
    double db_per_bit_;
};

}  // namespace codecs::wma_voice
