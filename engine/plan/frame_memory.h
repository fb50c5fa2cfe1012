// How much memory may be taken by what waits on the way from one file to another: the one place
// that decides it.
#pragma once

#include <cstddef>

#include "engine/plan/encode_plan.h"

namespace engine {

/// Between two stages, whatever comes first: so many that the two need not wake each other for each
/// frame. One frame always passes.
inline constexpr std::size_t kMostQueuedFrames = 2;
inline constexpr std::size_t kMostQueuedBytes = 8U << 20U;

/// The packets of a file's stream that wait for their decoder, whatever comes first.
inline constexpr std::size_t kMostPackets = 64;
inline constexpr std::size_t kMostPacketBytes = 4U << 20U;

/// The coded frames of a stream that wait for those of another one to be written between them.
inline constexpr std::size_t kMostCodedFrames = 1024;
inline constexpr std::size_t kMostCodedBytes = 16U << 20U;

/// In front of a video encoder. Follows from the plan alone: where GOPs begin and what rate control
/// knows must not depend on the machine.
struct FrameMemory {
    /// The most frames of a GOP: enough that its I picture is a small part of it.
    int longest_gop = 0;
    /// That wait so that rate control and the encoder know what comes.
    int look_ahead = 0;
    /// For each GOP but one that is coded at the same time. While one is coded, the next one comes
    /// in: what arrives of two in the time of one and is not coded meanwhile is half a GOP. None
    /// where frames are too large: then GOPs are coded one after the other.
    int waiting = 0;
    /// That come at once when there is room again: threads that wake each other for every small
    /// frame do little else, and a burst of large ones would leave the decoder without work.
    int burst = 0;
};
FrameMemory FrameMemoryOf(const VideoPlan& plan);

}  // namespace engine
