// A server that streams are pushed to, with the humours that servers have.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace test_support {

struct PushHumours {
    std::string user;  // wanted; "" = nobody is asked
    std::string password;
    bool digest = true;                          // else the password as it is
    unsigned set_up_status = 204;                // of every set-up
    std::string server = "Cougar/9.01.01.3841";  // what it says it is
    std::string moved_to;                        // another path, for every other one
    bool silent = false;                         // takes what it gets and says nothing
    int hangs_up_after = -1;                     // packets, once
    int complains_after = -1;                    // packets, once, with a 408
    bool forgets = false;                        // sessions, when a connection ends
};

/// What it has got so far.
struct PushReceived {
    std::vector<std::string> requests;  // their heads
    std::vector<std::string> set_ups;   // their bodies
    std::vector<std::string> headers;
    std::vector<std::string> packets;
    int fillers = 0;
    bool ended = false;  // properly
};

/// Serves loopback, one connection after the other, on a thread of its own.
class PushReceiver {
  public:
    explicit PushReceiver(PushHumours humours = {});
    ~PushReceiver();
    PushReceiver(const PushReceiver&) = delete;
    PushReceiver& operator=(const PushReceiver&) = delete;

    std::uint16_t Port() const { return port_; }
    PushReceived Received() const;

  private:
    class Conversation;

    void Serve();

    PushHumours humours_;  // the thread's own
    int listener_ = -1;
    int stop_[2] = {-1, -1};  // a pipe
    std::uint16_t port_ = 0;
    int sessions_ = 0;  // given out
    mutable std::mutex mutex_;
    PushReceived received_;
    std::thread thread_;
};

}  // namespace test_support
