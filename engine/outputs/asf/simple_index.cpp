#include "engine/outputs/asf/simple_index.h"

#include <algorithm>

#include "engine/base/ticks.h"
#include "engine/outputs/asf/guids.h"

namespace engine::asf {
namespace {
constexpr std::int64_t kIntervalMs = 1000;
constexpr std::size_t kEntriesAhead = 14'400;    // four hours before the table ever grows
constexpr std::size_t kMostEntries = 4'294'967;  // then the times of packets begin anew
}  // namespace

SimpleIndex::SimpleIndex() { entries_.reserve(kEntriesAhead); }

void SimpleIndex::Add(const KeyFrameSpan& key_frame) {
    const Entry entry{static_cast<std::uint32_t>(key_frame.first_packet),
                      static_cast<std::uint16_t>(std::min(key_frame.packets, 0xFFFFU))};
    if (!has_key_frame_) latest_ = entry;  // also serves the time before it
    has_key_frame_ = true;
    FillBefore(key_frame.pts_ms);
    latest_ = entry;
}

void SimpleIndex::FillBefore(std::int64_t pts_ms) {
    while (entries_.size() < kMostEntries &&
           static_cast<std::int64_t>(entries_.size()) * kIntervalMs < pts_ms)
        entries_.push_back(latest_);
}

void SimpleIndex::AppendTo(ByteWriter& out, const Guid& file_id, std::int64_t last_pts_ms) {
    if (has_key_frame_) FillBefore(last_pts_ms + 1);
    std::uint32_t most_packets = 0;
    for (const Entry& entry : entries_)
        most_packets = std::max<std::uint32_t>(most_packets, entry.packets);
    ByteWriter body;
    body.Id(file_id);
    body.U64(kIntervalMs * Ticks::kPerMillisecond);
    body.U32(most_packets);
    body.U32(static_cast<std::uint32_t>(entries_.size()));
    for (const Entry& entry : entries_) {
        body.U32(entry.packet);
        body.U16(entry.packets);
    }
    out.Object(guid::kSimpleIndex, body);
}

}  // namespace engine::asf
