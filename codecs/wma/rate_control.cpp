#include "codecs/wma/rate_control.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "codecs/common/index.h"

namespace codecs::wma {
namespace {

// How far a stream of constant rate may be ahead of it.
constexpr double kReservoirSeconds = 0.6;
// How much coarser frames become while the reservoir empties, in dB.
constexpr double kReservoirDb = 12;
// How long the lasting offset remembers.
constexpr double kMemorySeconds = 1;
// How far a stream is to be ahead of its rate: a part of the reservoir, and of what has been
// written, so that short streams keep their rate too.
constexpr double kMostAhead = 0.25;
constexpr double kAheadOfTime = 0.01;
// How far a second pass looks ahead for a constant rate.
constexpr double kHorizonSeconds = 2;
// A frame gets this part of what the rate gives one, however empty the reservoir is.
constexpr double kLeastPart = 0.2;
// The end of a stream gets this part of what the rate gives it, or of what the first pass planned
// for it where the rate varies, whatever was taken before.
constexpr double kLeastShare = 0.5;
constexpr double kLeastOfPlan = 0.3;

// Fills with what frames take, and drains by what a rate gives them.
class Bucket {
  public:
    Bucket(double frame_bits, double size) : frame_bits_(frame_bits), size_(size) {}

    /// @param bits  that all packets take up to here
    void Wrote(std::int64_t bits) {
        level_ += static_cast<double>(bits - written_) - frame_bits_;
        written_ = bits;
    }
    /// What it does not drain now it does not drain later.
    void WroteAtMost(std::int64_t bits) {
        Wrote(bits);
        level_ = std::max(level_, 0.0);
    }
    double Level() const { return level_; }  // below 0: the rate has given more than was taken
    double Size() const { return size_; }
    double MostBits() const { return std::max(size_ - level_, 0.0) + kLeastPart * frame_bits_; }

  private:
    double frame_bits_;
    double size_;
    double level_ = 0;
    std::int64_t written_ = 0;
};

class ConstantRate final : public RateControl {
  public:
    explicit ConstantRate(const RateSettings& settings)
        : memory_(settings.frame_seconds / kMemorySeconds),
          frame_bits_(settings.frame_bits),
          bucket_(settings.frame_bits,
                  settings.frame_bits / settings.frame_seconds * kReservoirSeconds) {}

    double Offset(double fair_offset) override {
        // A mean of all so far, until that is longer than the memory.
        const double weight = std::min(std::max(memory_, 1.0 / (1.0 + judged_)), 1.0);
        ++judged_;
        lasting_offset_ += weight * (fair_offset - lasting_offset_);
        const double given = static_cast<double>(frames_) * frame_bits_;
        const double ahead = std::min(kMostAhead * bucket_.Size(), kAheadOfTime * given);
        return lasting_offset_ + kReservoirDb * (bucket_.Level() - ahead) / bucket_.Size();
    }
    bool NeedsFairOffset() const override { return true; }
    double MostBits() const override { return bucket_.MostBits(); }
    void Wrote(std::int64_t bits) override {
        ++frames_;
        bucket_.Wrote(bits);
    }
    double Missing() const override { return -bucket_.Level(); }

  private:
    double memory_;
    double frame_bits_;
    Bucket bucket_;
    std::int64_t frames_ = 0;
    int judged_ = 0;  // frames whose fair offset is known
    double lasting_offset_ = 0;
};

class SameQuality final : public RateControl {
  public:
    explicit SameQuality(double offset_db) : offset_(offset_db) {}

    double Offset(double /*fair_offset*/) override { return offset_; }
    double MostBits() const override { return std::numeric_limits<double>::max(); }
    void Wrote(std::int64_t /*bits*/) override {}

  private:
    double offset_;
};

// What is left is shared out so that all frames that are left, or those of the next seconds, would
// have one offset.
class PlannedRate final : public RateControl {
  public:
    explicit PlannedRate(const RateSettings& settings)
        : settings_(settings),
          stuffs_(settings.mode == RateMode::Constant),
          mean_(settings.frame_bits, 0),
          limit_(LimitOf(settings)) {
        const std::size_t frames = settings.first_pass.size();
        horizon_ = stuffs_
                       ? std::max<std::size_t>(
                             1, static_cast<std::size_t>(kHorizonSeconds / settings.frame_seconds))
                       : frames;
        weights_.resize(frames + 1);
        for (std::size_t i = 0; i < frames; ++i)
            weights_[i + 1] =
                weights_[i] + std::exp2(static_cast<double>(settings.first_pass[i]) / kDbByHalving);
        planned_ = static_cast<double>(frames) / weights_[frames];
    }

    double Offset(double /*fair_offset*/) override {
        const std::size_t frames = settings_.first_pass.size();
        const std::size_t first = std::min(next_, frames - 1);
        const std::size_t end = std::min(first + horizon_, frames);
        const double given = settings_.frame_bits * static_cast<double>(end - first);
        const double weight = (weights_[end] - weights_[first]) * settings_.frame_bits;
        const double bits =
            std::max(given - mean_.Level(),
                     stuffs_ ? kLeastShare * given : kLeastOfPlan * weight * planned_);
        return std::clamp(kDbByHalving * std::log2(weight / bits), kLeastOffsetDb, kMostOffsetDb);
    }
    double MostBits() const override { return limit_.MostBits(); }
    void Wrote(std::int64_t bits) override {
        ++next_;
        mean_.Wrote(bits);
        if (stuffs_)
            limit_.Wrote(bits);
        else
            limit_.WroteAtMost(bits);
    }
    double Missing() const override { return stuffs_ ? -mean_.Level() : -1; }

  private:
    static Bucket LimitOf(const RateSettings& settings) {
        const double second = 1 / settings.frame_seconds;
        if (settings.mode == RateMode::Constant)
            return {settings.frame_bits, settings.frame_bits * second * kReservoirSeconds};
        if (settings.mode == RateMode::Peak) return {settings.peak_bits, settings.peak_buffer};
        return {settings.frame_bits, std::numeric_limits<double>::max()};
    }

    RateSettings settings_;
    bool stuffs_;
    Bucket mean_, limit_;
    std::size_t horizon_;
    std::vector<double> weights_;  // of all frames before: what they take at offset 0, in parts
    double planned_ = 0;           // of that, what they get if all goes as the first pass says
    std::size_t next_ = 0;
};

}  // namespace

std::unique_ptr<RateControl> MakeRateControl(const RateSettings& settings) {
    if (settings.mode == RateMode::Quality)
        return std::make_unique<SameQuality>(settings.quality_offset_db);
    if (!settings.first_pass.empty()) return std::make_unique<PlannedRate>(settings);
    return std::make_unique<ConstantRate>(settings);
}

}  // namespace codecs::wma
