// Frames of a GOP that are to be coded, and what they cost as rate control reckons.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "codecs/common/picture_forecast.h"
#include "engine/base/av/av_ptr.h"
#include "engine/base/ticks.h"
#include "engine/encoders/gop_coder.h"

namespace engine {

struct GopFrame {
    FrameHandle frame;
    std::size_t index = 0;  // in the GOP, as shown
    // Sums of differences between samples; see codecs/common/picture_cost.h.
    double intra_cost = 0;
    double step_cost = 0;  // of what is new beside the frame before it
    bool decided = false;  // by rate control
};

double IntraCostOf(const AVFrame& frame);

/// The frames of `frames`, after `before` where that is one.
std::vector<const AVFrame*> Pointers(const AVFrame* before, std::span<const GopFrame> frames);

/// Gives a frame its costs; to be called for the frames of a GOP as they are shown.
/// @param before  the frame before it, null where there is none; becomes this one
/// @param coder   is shown the frame; null where nothing is known of what comes
/// Throws platform::Error when memory is short.
void Judge(GopFrame& frame, FrameHandle& before, GopCoder* coder, FramePool& frames);

/// Those of `frames` that have not been decided, in place of what `waiting` holds.
/// @param start  of the GOP
void ListWaiting(std::span<const GopFrame> frames, Ticks start,
                 std::vector<codecs::WaitingPicture>& waiting);

/// What rate control is to know of the frame; its time and what waits are still to be set.
/// @param frames  of the GOP, as shown; of a P picture, those before it that have not been decided
///                become B pictures
codecs::RatedPicture Rated(const GopFrame& frame, codecs::PictureKind kind,
                           std::span<const GopFrame> frames);

}  // namespace engine
