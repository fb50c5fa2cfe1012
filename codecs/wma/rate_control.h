// Chooses how coarsely frames are quantised.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace codecs::wma {

enum class RateMode : std::uint8_t {
    Constant,  // the same rate at all times, but for what a reservoir evens out
    Quality,   // the same quality, whatever it takes
    BitRate,   // the rate on average; needs a first pass
    Peak,      // the same, and no more than a peak rate for longer than a buffer lasts; likewise
};

/// What a first pass has found of a frame: the offset with which it takes what the rate gives a
/// frame, in dB. kLeastOffsetDb = it never takes as much.
using FirstPass = std::vector<float>;

constexpr double kLeastOffsetDb = -50;
constexpr double kMostOffsetDb = 50;
/// How many dB halve the bits of a frame, about.
constexpr double kDbByHalving = 9;

/// What is asked of a stream.
struct RateSettings {
    RateMode mode = RateMode::Constant;
    double frame_bits = 0;  // that the rate gives a frame
    double frame_seconds = 0;
    double quality_offset_db = 0;  // of all frames, of that mode
    double peak_bits = 0;          // that the peak rate gives a frame, of that mode
    double peak_buffer = 0;        // bits, likewise
    FirstPass first_pass;          // empty where there was none
};

/// One thread. Calls alternate: Offset, then Wrote.
class RateControl {
  public:
    virtual ~RateControl() = default;

    /// The offset for the next frame, in dB.
    /// @param fair_offset  that with which it takes as many bits as the rate gives a frame; of no
    ///                     matter where NeedsFairOffset says so
    virtual double Offset(double fair_offset) = 0;
    virtual bool NeedsFairOffset() const { return false; }
    /// The most bits that the next frame may take.
    virtual double MostBits() const = 0;
    /// One more frame has been written.
    /// @param bits  that all packets take up to here
    virtual void Wrote(std::int64_t bits) = 0;
    /// Bits that must be filled with zeros, so that the rate is kept; below 0: none.
    virtual double Missing() const { return -1; }
};

/// Takes the constant rate for what has no first pass although it needs one.
std::unique_ptr<RateControl> MakeRateControl(const RateSettings& settings);

}  // namespace codecs::wma
