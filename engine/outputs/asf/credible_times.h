// Which packets of a damaged file have times that can be believed.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "engine/outputs/asf/packet_reader.h"

namespace engine::asf {

/// A difference of more than this is a leap.
inline constexpr std::int64_t kLeapMs = 5000;

/// A leap is believed when something else has made it too: the packet's own send time, or the
/// packet that follows.
class CredibleTimes {
  public:
    explicit CredibleTimes(std::uint64_t preroll_ms);

    /// Packets come in order. False: a payload's time is not to be believed; the packet is then as
    /// if it had not been there. A send time that lies behind what the packet holds is moved there.
    /// @param next  the packet that follows, nullptr for the last
    bool Take(PacketFacts& packet, const PacketFacts* next);

    /// Whether any packet was believed for the sake of the next.
    bool LeantOnNext() const { return leant_on_next_; }

  private:
    struct Reached {
        std::array<std::optional<std::int64_t>, 128> of_stream;
        std::int64_t latest_ms = 0;  // of the last payload of any stream
        std::int64_t ahead_ms = 0;   // by how much that one was sent before
    };

    Reached reached_;
    bool leant_on_next_ = false;
};

}  // namespace engine::asf
