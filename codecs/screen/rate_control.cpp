#include "codecs/screen/rate_control.h"

#include <algorithm>
#include <cmath>

namespace codecs::screen {
namespace {

// What keeps the average rate lets so much of it pass at once.
constexpr double kAverageSeconds = 20;
// Content that goes on moving leaves so much of a bucket for the next key frame.
constexpr double kReserve = 0.7;
// Of what room is left, for what becomes sharper in one frame.
constexpr double kRestingPart = 0.15;
// What changes beside the rectangles leaves them at least so much of their bits.
constexpr double kLeastMovingPart = 0.25;
constexpr double kLearning = 0.1;
// Beside content that moves at so much of the coarsest quantiser, what rests takes no more than a
// frame's share.
constexpr double kCoarsePart = 0.75;
// What comes so long after a dropped frame is most likely as large.
constexpr double kHopelessSeconds = 0.25;

}  // namespace

RateControl::RateControl(const RateSettings& settings, double frames_per_second)
    : settings_(settings), interval_(1 / frames_per_second) {
    if (settings.vbv_rate_bps > 0)
        buckets_.push_back({settings.vbv_rate_bps, settings.vbv_bits, true, 0});
    const bool fixed = settings.finest == settings.coarsest;
    if (fixed || settings.rate_bps <= 0) return;
    const bool constant = settings.vbv_rate_bps > 0 && settings.vbv_rate_bps <= settings.rate_bps;
    const double size = constant ? settings.vbv_bits : kAverageSeconds * settings.rate_bps;
    // As if it had moved before: what moves from the beginning to the end takes the rate.
    buckets_.push_back({settings.rate_bps, size, false, (1 - kReserve) * size});
}

void RateControl::Ask(FrameRequest& request) {
    request.finest = static_cast<int>(std::lround(settings_.finest));
    request.coarsest = static_cast<int>(std::lround(settings_.coarsest));
    const double passed = std::max(request.seconds - seconds_, 0.0);
    seconds_ = request.seconds;
    for (Bucket& bucket : buckets_) {
        bucket.level = std::max(0.0, bucket.level - passed * bucket.rate);
        const double room = std::max(0.0, bucket.size - bucket.level);
        // As much as drains, when what is left is the reserve.
        const double seconds = kReserve * bucket.size / bucket.rate;
        request.moving_bits = std::min(request.moving_bits, room * interval_ / seconds);
        request.resting_bits = std::min(request.resting_bits, room * kRestingPart);
        if (moves_coarsely_)
            request.resting_bits = std::min(request.resting_bits, bucket.rate * interval_);
    }
    if (!buckets_.empty())
        request.moving_bits =
            std::max(kLeastMovingPart * request.moving_bits, request.moving_bits - beside_);
}

bool RateControl::Overruns(double bits) const {
    return std::ranges::any_of(buckets_, [&](const Bucket& bucket) {
        return bucket.strict && bucket.level > 0 && bucket.level + bits > bucket.size;
    });
}

void RateControl::Dropped(const CodedFrame& frame) {
    dropped_at_ = seconds_;
    dropped_bits_ = 8.0 * static_cast<double>(frame.data.size());
}

bool RateControl::IsHopeless() const {
    return seconds_ - dropped_at_ < kHopelessSeconds && Overruns(dropped_bits_ / 2);
}

void RateControl::Sent(const CodedFrame& frame) {
    const double bits = 8.0 * static_cast<double>(frame.data.size());
    moves_coarsely_ = frame.quantiser >= kCoarsePart * settings_.coarsest;
    if (frame.rectangle_bits > 0 && !frame.key)
        beside_ += kLearning * (bits - frame.rectangle_bits - beside_);
    for (Bucket& bucket : buckets_) bucket.level += bits;
}

}  // namespace codecs::screen
