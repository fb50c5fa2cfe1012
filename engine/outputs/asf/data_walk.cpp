#include "engine/outputs/asf/data_walk.h"

#include <algorithm>

#include "engine/outputs/asf/credible_times.h"

namespace engine::asf {

void DataWalk::Add(const PacketFacts& packet) {
    send_end_ms_ = std::max(send_end_ms_, std::int64_t{packet.send_ms} + packet.duration_ms);
    for (const PayloadFacts& payload : packet.payloads) Take(payload);
    ++packet_;
}

void DataWalk::Take(const PayloadFacts& payload) {
    Stream& stream = streams_[payload.stream];
    if (payload.offset == 0) {
        stream.number = payload.object;
        stream.bytes = payload.object_bytes;
        stream.received = 0;
        stream.first_packet = packet_;
        stream.open = true;
    }
    // A fragment whose predecessor is missing belongs to an object that is never whole.
    if (!stream.open || stream.number != payload.object || stream.received != payload.offset) {
        stream.open = false;
        return;
    }
    stream.received += payload.bytes;
    if (stream.received >= stream.bytes) Complete(payload, stream);
}

void DataWalk::Complete(const PayloadFacts& payload, Stream& stream) {
    stream.open = false;
    const std::int64_t shown_ms = payload.pts_ms;
    const std::int64_t step_ms = stream.last_ms < 0 ? 0 : shown_ms - stream.last_ms;
    if (step_ms > 0 && step_ms <= kLeapMs) stream.length_ms = step_ms;
    stream.last_ms = std::max(stream.last_ms, shown_ms);
    if (videos_[payload.stream] && payload.key) {
        ++totals_.key_frames;
        indexes_[payload.stream].Add(
            {payload.stream, shown_ms, stream.first_packet,
             static_cast<std::uint32_t>(packet_ - stream.first_packet + 1)});
    }
    ++totals_.objects;
    totals_.packets = packet_ + 1;
    totals_.last_pts_ms = std::max(totals_.last_pts_ms, shown_ms);
    totals_.end_ms = std::max(totals_.end_ms, shown_ms + stream.length_ms);
    totals_.send_end_ms = send_end_ms_;
}

}  // namespace engine::asf
