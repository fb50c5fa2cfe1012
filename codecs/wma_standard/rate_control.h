// Chooses how coarsely frames are quantised, so that packets come at a constant rate.
#pragma once

#include <cstdint>

namespace codecs::wma_standard {

/// Bits per frame, and how far the stream may run ahead of its rate.
struct RateSettings {
    double frame_bits = 0;
    double frame_seconds = 0;
    double reservoir_seconds = 0.6;
};

class ConstantRate {
  public:
    explicit ConstantRate(const RateSettings& settings) : settings_(settings) {}

    /// The offset for the next frame, in dB.
    /// @param fair_offset  that with which it takes as many bits as the rate gives a frame
    double Offset(double fair_offset);
    /// The most bits that the next frame may take.
    double MostBits() const;
    /// One more frame has been written.
    /// @param bits  that all packets take up to here
    void Wrote(std::int64_t bits);
    void SetWritten(std::int64_t bits) { written_ = static_cast<double>(bits); }
    /// By how many bits the stream is behind its rate; below 0: ahead.
    double Behind() const;

  private:
    double Reservoir() const {
        return settings_.frame_bits / settings_.frame_seconds * settings_.reservoir_seconds;
    }

    RateSettings settings_;
    std::int64_t frames_ = 0;
    double written_ = 0;
    int judged_ = 0;  // frames whose fair offset is known
    double lasting_offset_ = 0;
};

}  // namespace codecs::wma_standard
