// How long a run will still take, from how fast it has come so far.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/run_report.h"

namespace platform::host {

/// "0:01:23" of seconds.
std::string ClockText(std::int64_t seconds);

/// Told of the run about once a second. What was slow long ago counts less than what is slow now;
/// of two passes the second is taken to be as fast as the first until it shows its own pace.
class TimeLeft {
  public:
    using Clock = std::chrono::steady_clock;

    /// Nothing where the end is not known (a recording), while it pauses or stops, and in the first
    /// seconds.
    std::optional<std::chrono::seconds> Of(const RunProgress& progress, Clock::time_point now);
    /// "0:01:23 left", or "" where Of has nothing.
    std::string TextOf(const RunProgress& progress, Clock::time_point now);
    /// Another run begins.
    void Restart() { *this = TimeLeft(); }

  private:
    void Learn(const RunProgress& progress, Clock::time_point now);

    std::optional<Clock::time_point> last_;  // nothing after a pause
    std::int64_t last_done_ms_ = 0;          // of all passes
    double encoded_ms_ = 0;                  // both fade with time
    double passed_ms_ = 0;
};

}  // namespace platform::host
