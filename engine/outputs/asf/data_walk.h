// Puts the media objects of a file's packets together, as far as numbers and an index need it.
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <map>

#include "engine/outputs/asf/packet_reader.h"
#include "engine/outputs/asf/simple_index.h"

namespace engine::asf {

/// What the packets hold up to the last one that completes a media object; what follows that one
/// is of no use to a player.
struct WalkTotals {
    std::uint64_t packets = 0;
    std::uint64_t objects = 0;     // whole ones
    std::int64_t last_pts_ms = 0;  // the largest, preroll included
    std::int64_t end_ms = 0;       // of the last object, preroll included
    std::int64_t send_end_ms = 0;  // of the last packet
    std::uint64_t key_frames = 0;  // of video
    bool operator==(const WalkTotals&) const = default;
};

class DataWalk {
  public:
    explicit DataWalk(const std::bitset<128>& videos) : videos_(videos) {}

    /// Packets come in order.
    void Add(const PacketFacts& packet);

    const WalkTotals& Totals() const { return totals_; }
    /// Of the video streams that have a key frame, by stream number.
    std::map<int, SimpleIndex>& Indexes() { return indexes_; }

  private:
    struct Stream {
        // The object whose fragments arrive.
        std::uint32_t number = 0;
        std::uint32_t bytes = 0;
        std::uint64_t received = 0;
        std::uint64_t first_packet = 0;
        bool open = false;
        // The last whole one.
        std::int64_t last_ms = -1;
        std::int64_t length_ms = 0;  // the last step from one pts to the next
    };
    void Take(const PayloadFacts& payload);
    void Complete(const PayloadFacts& payload, Stream& stream);

    std::bitset<128> videos_;
    std::array<Stream, 128> streams_{};
    std::map<int, SimpleIndex> indexes_;
    std::uint64_t packet_ = 0;  // the number of the one that is taken
    std::int64_t send_end_ms_ = 0;
    WalkTotals totals_;
};

}  // namespace engine::asf
