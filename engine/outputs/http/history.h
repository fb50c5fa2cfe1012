// The packets since one that can be joined at, for those who come between two of them.
#pragma once

#include <cstddef>
#include <vector>

#include "engine/outputs/live/live_stream.h"

namespace engine::http {

/// Is empty, and who comes has to wait, where too much has come since. One thread.
class History {
  public:
    static constexpr std::size_t kMostBytes = 8U << 20U;

    void Add(const LivePacketPtr& packet);
    const std::vector<LivePacketPtr>& Packets() const { return packets_; }

  private:
    std::vector<LivePacketPtr> packets_;
    std::size_t bytes_ = 0;
};

}  // namespace engine::http
