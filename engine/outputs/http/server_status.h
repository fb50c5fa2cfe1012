// What a broadcast tells of itself: counted by its server, read by anyone.
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "engine/base/stream_header.h"
#include "platform/encoder.h"

namespace engine::http {

/// The broadcast as its page and its status describe it.
struct StatusText {
    std::string title;  // "" = none was given
    struct Stream {
        std::string kind;  // "audio", "video"
        std::string codec;
        std::string description;
        std::uint32_t bit_rate_bps = 0;  // 0 = not known beforehand
    };
    std::vector<Stream> streams;
    platform::BroadcastStats stats;
    std::int64_t uptime_s = 0;
};

/// Any thread.
class ServerStatus {
  public:
    explicit ServerStatus(const OutputHeader& header);

    void AddressesAre(std::vector<std::string> addresses);
    void ClientCame();
    void ClientWent();
    void Sent(std::size_t bytes);
    void Withheld(std::uint64_t frames);

    platform::BroadcastStats Stats() const;
    StatusText Text() const;

  private:
    StatusText described_;  // without what changes
    std::chrono::steady_clock::time_point began_ = std::chrono::steady_clock::now();
    mutable std::mutex mutex_;
    platform::BroadcastStats stats_;
};

}  // namespace engine::http
