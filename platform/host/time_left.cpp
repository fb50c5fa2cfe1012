#include "platform/host/time_left.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace platform::host {

namespace {

constexpr double kMemoryMs = 15'000;  // what is older counts a third
constexpr double kSureMs = 2'000;

std::int64_t Done(const RunProgress& progress) {
    return (progress.pass - 1) * progress.length_ms + progress.encoded_ms;
}

}  // namespace

std::string ClockText(std::int64_t seconds) {
    return fmt::format("{}:{:02}:{:02}", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

std::optional<std::chrono::seconds> TimeLeft::Of(const RunProgress& progress,
                                                 Clock::time_point now) {
    if (progress.state != EncoderState::Running || progress.length_ms <= 0) {
        last_.reset();
        return std::nullopt;
    }
    Learn(progress, now);
    if (passed_ms_ < kSureMs || encoded_ms_ <= 0) return std::nullopt;
    const std::int64_t left =
        std::max<std::int64_t>(progress.passes * progress.length_ms - Done(progress), 0);
    const double left_ms = static_cast<double>(left) * passed_ms_ / encoded_ms_;
    return std::chrono::seconds(std::llround(left_ms / 1000));
}

void TimeLeft::Learn(const RunProgress& progress, Clock::time_point now) {
    const std::int64_t done = Done(progress);
    if (last_) {
        const double passed = std::chrono::duration<double, std::milli>(now - *last_).count();
        const double fade = std::exp(-passed / kMemoryMs);
        passed_ms_ = passed_ms_ * fade + passed;
        encoded_ms_ = encoded_ms_ * fade +
                      static_cast<double>(std::max<std::int64_t>(done - last_done_ms_, 0));
    }
    last_ = now;
    last_done_ms_ = done;
}

std::string TimeLeft::TextOf(const RunProgress& progress, Clock::time_point now) {
    const auto left = Of(progress, now);
    return left ? ClockText(left->count()) + " left" : "";
}

}  // namespace platform::host
