// Sound that a test knows the time of.
#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace test_support {

/// Plays short beeps through a sink of a sound server, and notes when each will have been heard.
class BeepPlayer {
  public:
    /// @param server  as in PULSE_SERVER
    /// @param period  hundredths of a second from beep to beep
    BeepPlayer(const std::string& server, const std::string& sink, int period);
    ~BeepPlayer();
    BeepPlayer(const BeepPlayer&) = delete;
    BeepPlayer& operator=(const BeepPlayer&) = delete;

    /// Seconds on the steady clock, rising; the last ones may still be to come.
    std::vector<double> Heard() const;

  private:
    void Play(const std::string& server, const std::string& sink, int period);

    std::atomic<bool> stopped_{false};
    mutable std::mutex mutex_;
    std::vector<double> heard_;
    std::thread thread_;
};

}  // namespace test_support
