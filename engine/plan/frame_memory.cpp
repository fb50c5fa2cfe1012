#include "engine/plan/frame_memory.h"

#include <algorithm>
#include <cstdint>

namespace engine {
namespace {

// Bytes in mebibytes, the rest in frames.
struct Limits {
    std::int64_t gop_bytes, least_gop, most_gop;
    std::int64_t ahead_bytes, least_ahead, most_ahead;
    std::int64_t waiting_bytes, most_waiting;
};

// clang-format off
// Beside encoders that are not ours decoding is part of the work: less than half a GOP keeps two
// processors busy.
constexpr Limits kOwn{
    // bytes  least  most
    96,       60,    300,   // of a GOP
    36,       4,     16,    // ahead
    24,              150};  // waiting
constexpr Limits kOthers{
    96,       60,    100,
    4,        4,     16,
    12,              50};
constexpr std::int64_t kBurstMebibytes = 2;
constexpr std::int64_t kMostBurst = 16;
// Fewer do not make up for a second encoder's memory.
constexpr std::int64_t kFewestWaiting = 4;
// clang-format on

}  // namespace

FrameMemory FrameMemoryOf(const VideoPlan& plan) {
    const bool own = plan.codec->maker.kind == platform::CodecMaker::Kind::Wmv9;
    const Limits& limits = own ? kOwn : kOthers;
    const std::int64_t frame = std::int64_t{plan.width} * plan.height * 3 / 2;
    const auto frames_of = [frame](std::int64_t mebibytes, std::int64_t least, std::int64_t most) {
        return std::clamp((mebibytes << 20) / frame, least, most);
    };
    const std::int64_t gop = frames_of(limits.gop_bytes, limits.least_gop, limits.most_gop);
    const std::int64_t ahead = frames_of(limits.ahead_bytes, limits.least_ahead, limits.most_ahead);
    const std::int64_t waiting =
        std::min(frames_of(limits.waiting_bytes, 0, limits.most_waiting), gop / 2);
    return {static_cast<int>(gop), static_cast<int>(ahead),
            static_cast<int>(waiting < kFewestWaiting ? 0 : waiting),
            static_cast<int>(frames_of(kBurstMebibytes, 1, kMostBurst))};
}

}  // namespace engine
