#include "engine/outputs/asf/credible_times.h"

#include <algorithm>

namespace engine::asf {
namespace {

constexpr std::uint64_t kMostPrerollMs = 60'000;  // of one that is to be believed itself

bool IsNear(std::int64_t a, std::int64_t b) { return a - b <= kLeapMs && b - a <= kLeapMs; }

bool HasTime(const PayloadFacts& payload) { return payload.object_bytes != 0; }

/// Frames may lie far apart, so that one that comes later confirms a leap ahead; a leap back is
/// confirmed by its neighbourhood alone.
bool Confirms(const PacketFacts& next, std::int64_t time, bool ahead) {
    return std::any_of(next.payloads.begin(), next.payloads.end(), [&](const PayloadFacts& other) {
        const std::int64_t its = other.pts_ms;
        return HasTime(other) && (IsNear(its, time) || (ahead && its > time));
    });
}

}  // namespace

CredibleTimes::CredibleTimes(std::uint64_t preroll_ms) {
    reached_.latest_ms = static_cast<std::int64_t>(std::min(preroll_ms, kMostPrerollMs));
    reached_.ahead_ms = reached_.latest_ms;
}

bool CredibleTimes::Take(PacketFacts& packet, const PacketFacts* next) {
    Reached reached = reached_;
    bool leant = false;
    for (const PayloadFacts& payload : packet.payloads) {
        if (!HasTime(payload)) continue;
        const std::int64_t time = payload.pts_ms;
        auto& own = reached.of_stream[payload.stream];
        const std::int64_t ahead = time - packet.send_ms;
        const bool steady = IsNear(time, reached.latest_ms) || (own && IsNear(time, *own)) ||
                            IsNear(ahead, reached_.ahead_ms);
        if (!steady) {
            if (next == nullptr || !Confirms(*next, time, time > reached.latest_ms)) return false;
            leant = true;
        }
        own = reached.latest_ms = time;
        reached.ahead_ms = ahead;
    }
    leant_on_next_ = leant_on_next_ || leant;
    const bool sent_before = reached.ahead_ms >= 0;
    if (!sent_before) {
        packet.send_ms = static_cast<std::uint32_t>(reached.latest_ms);
        reached.ahead_ms = reached_.ahead_ms;
    }
    reached_ = reached;
    return true;
}

}  // namespace engine::asf
