#include "engine/sources/files/packet_router.h"

#include <utility>

namespace engine {

bool PacketRouter::Push(MediaKind kind, PacketHandle packet) {
    std::unique_lock lock(mutex_);
    Lane& lane = Of(kind);
    if (lane.Full()) {
        pushing_ = true;
        freed_.wait(lock, [&] { return lane.cancelled || lane.HasRoom(); });
        pushing_ = false;
    }
    if (lane.cancelled) return false;
    lane.bytes += static_cast<std::size_t>(packet->size);
    lane.ring[(lane.first + lane.count) % kMostPackets] = std::move(packet);
    ++lane.count;
    lock.unlock();
    lane.filled.notify_one();
    return true;
}

bool PacketRouter::Pop(MediaKind kind, PacketHandle& packet) {
    packet.reset();
    std::unique_lock lock(mutex_);
    Lane& lane = Of(kind);
    lane.wanted = true;
    lane.filled.wait(lock, [&] { return finished_ || lane.count > 0; });
    lane.wanted = false;
    if (lane.count == 0) return false;
    packet = std::move(lane.ring[lane.first]);
    lane.first = (lane.first + 1) % kMostPackets;
    --lane.count;
    lane.bytes -= static_cast<std::size_t>(packet->size);
    if (pushing_ && lane.HasRoom()) freed_.notify_one();
    return true;
}

void PacketRouter::Finish() {
    const std::lock_guard lock(mutex_);
    finished_ = true;
    for (Lane& lane : lanes_) lane.filled.notify_one();
}

void PacketRouter::Cancel(MediaKind kind) {
    const std::lock_guard lock(mutex_);
    Of(kind).cancelled = true;
    freed_.notify_one();
}

bool PacketRouter::AllCancelled() const {
    const std::lock_guard lock(mutex_);
    return lanes_[0].cancelled && lanes_[1].cancelled;
}

bool PacketRouter::Starved() const {
    const std::lock_guard lock(mutex_);
    const auto waits = [](const Lane& lane) { return lane.wanted && lane.count == 0; };
    return pushing_ && (waits(lanes_[0]) || waits(lanes_[1]));
}

}  // namespace engine
