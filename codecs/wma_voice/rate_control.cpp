#include "codecs/wma_voice/rate_control.h"

#include <algorithm>
#include <cmath>

namespace codecs::wma_voice {
namespace {

constexpr double kUsualDbPerBit = 0.04;
constexpr double kLeastLog = -9;
constexpr double kMostLog = 1;
constexpr double kByBalance = 2.5;  // of the logarithm, a second of balance
constexpr double kByTime = 0.3;     // of the logarithm, a second of balance in a second
// A stream is no further from its rate than this and a part of its length, in seconds.
constexpr double kFirstLeeway = 0.2;
constexpr double kLeewayPart = 0.015;
constexpr double kMostLeeway = 0.8;

}  // namespace

RateControl::RateControl(const StreamFormat& format)
    : bit_rate_(format.BitRate()),
      superframe_bits_(format.SuperframeBits()),
      superframe_seconds_(static_cast<double>(kSuperframeSamples) / format.SamplingRate()),
      log_worth_(std::log(kUsualDbPerBit)),
      db_per_bit_(kUsualDbPerBit) {}

double RateControl::Leeway() const {
    const double seconds = static_cast<double>(superframes_) * superframe_seconds_;
    return bit_rate_ * std::min(kFirstLeeway + kLeewayPart * seconds, kMostLeeway);
}

int RateControl::MostBits() const {
    return static_cast<int>(superframe_bits_ + std::max(balance_ + Leeway(), 0.0));
}

double RateControl::Missing() const { return balance_ - Leeway(); }

void RateControl::Wrote(std::int64_t bits) {
    ++superframes_;
    balance_ = static_cast<double>(superframes_) * superframe_bits_ - static_cast<double>(bits);
    const double seconds = balance_ / bit_rate_;
    log_worth_ =
        std::clamp(log_worth_ - kByTime * seconds * superframe_seconds_, kLeastLog, kMostLog);
    db_per_bit_ = std::exp(std::clamp(log_worth_ - kByBalance * seconds, kLeastLog, kMostLog));
}

}  // namespace codecs::wma_voice
