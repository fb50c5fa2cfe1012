#include "engine/filters/video_filter_chain.h"

#include <algorithm>
#include <utility>

#include "engine/base/av/av_error.h"

namespace engine {
namespace {

// A frame that ends within this of the begin mark ends at it.
constexpr Ticks kMarkTolerance = Ticks::FromMilliseconds(1);

}  // namespace

VideoFilterChain::VideoFilterChain(const VideoPlan& plan, const VideoFrameFormat& format, Ticks end,
                                   double turn, const std::atomic<bool>& stop, FramePool& frames)
    : plan_(plan),
      end_(end),
      stop_(stop),
      frames_(frames),
      ceiling_(plan.rate_ceiling),
      converter_(plan, format, turn, frames) {
    if (plan.deinterlace) deinterlacer_.emplace(frames);
    if (plan.remove_telecine || plan.telecine) telecine_.emplace(plan.telecine, frames);
}

bool VideoFilterChain::Push(FrameHandle frame, const FrameSink& next) {
    if (plan_.input.still) return Repeat(std::move(frame), next);
    if (end_.count > 0 && frame->pts >= end_.count) {
        if (Finish(next) && plan_.input.capture) HoldUntil(end_, next);
        return false;
    }
    return FromBeginMark(std::move(frame), next);
}

// A file that starts late does so with what it has; a mark, and the start of a recording, are
// somewhere in what is to be seen.
bool VideoFilterChain::OpensWithWhatIsThere() const {
    return plan_.input.capture || plan_.input.mark_in.count > 0;
}

bool VideoFilterChain::FromBeginMark(FrameHandle frame, const FrameSink& next) {
    if (frame->pts < 0) {
        before_begin_ = std::move(frame);
        return true;
    }
    if (before_begin_) {
        // What is on the screen at the begin mark opens the session.
        FrameHandle first = std::move(before_begin_);
        if (frame->pts > kMarkTolerance.count && OpensWithWhatIsThere()) {
            first->pts = 0;
            first->pkt_duration = frame->pts;
            if (!Restore(std::move(first), next)) return false;
        }
    }
    return Restore(std::move(frame), next);
}

bool VideoFilterChain::Restore(FrameHandle frame, const FrameSink& next) {
    const FrameSink emit = [&](FrameHandle whole) { return Emit(std::move(whole), next); };
    if (deinterlacer_) return deinterlacer_->Push(std::move(frame), emit);
    if (telecine_) return telecine_->Push(std::move(frame), emit);
    return Emit(std::move(frame), next);
}

bool VideoFilterChain::Finish(const FrameSink& next) {
    if (before_begin_) {
        FrameHandle first = std::move(before_begin_);
        const std::int64_t rest = (plan_.input.capture ? 0 : first->pts) + first->pkt_duration;
        if (rest > kMarkTolerance.count && OpensWithWhatIsThere()) {
            first->pts = 0;
            first->pkt_duration = rest;
            if (!Restore(std::move(first), next)) return false;
        }
    }
    const FrameSink emit = [&](FrameHandle whole) { return Emit(std::move(whole), next); };
    if (deinterlacer_) return deinterlacer_->Finish(emit);
    return !telecine_ || telecine_->Finish(emit);
}

bool VideoFilterChain::Emit(FrameHandle frame, const FrameSink& next) {
    if (!ceiling_.Keep({frame->pts})) return true;
    // A kept frame stays on the screen for those dropped after it.
    frame->pkt_duration = std::max(frame->pkt_duration, ceiling_.Interval().count);
    if (end_.count > 0)
        frame->pkt_duration = std::min(frame->pkt_duration, end_.count - frame->pts);
    FrameHandle converted = converter_.Convert(std::move(frame));
    if (plan_.input.capture) shown_ = Repeated(*converted);
    return next(std::move(converted));
}

FrameHandle VideoFilterChain::Repeated(const AVFrame& shown) {
    FrameHandle frame = frames_.Get();
    CheckAv(av_frame_ref(frame.get(), &shown), "Repeating the picture failed");
    return frame;
}

bool VideoFilterChain::HoldUntil(Ticks end, const FrameSink& next) {
    if (!shown_) return true;
    const std::int64_t interval = 1000 * Ticks::kPerSecond / CodedFrameRate(plan_);
    if (end.count - shown_->pts < 2 * interval) return true;
    FrameHandle last = Repeated(*shown_);
    last->pts = end.count - interval;
    last->pkt_duration = interval;
    return next(std::move(last));
}

bool VideoFilterChain::Repeat(FrameHandle image, const FrameSink& next) {
    const FrameHandle converted = converter_.Convert(std::move(image));
    const std::int64_t rate = CodedFrameRate(plan_);
    for (std::int64_t i = 0; !stop_; ++i) {
        const std::int64_t time = av_rescale(i, 1000 * Ticks::kPerSecond, rate);
        if (time >= end_.count) break;
        FrameHandle frame = Repeated(*converted);
        frame->pts = time;
        frame->pkt_duration =
            std::min(av_rescale(i + 1, 1000 * Ticks::kPerSecond, rate), end_.count) - time;
        if (!next(std::move(frame))) return false;
    }
    return false;
}

}  // namespace engine
