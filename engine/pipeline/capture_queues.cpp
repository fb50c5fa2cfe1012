#include "engine/pipeline/capture_queues.h"

#include <algorithm>
#include <utility>

#include "engine/base/av/frame_bytes.h"

namespace engine {
namespace {

// A second of a moving screen, or what memory allows of it.
constexpr std::size_t kMostFrames = 30;
constexpr std::size_t kMostFrameBytes = 128U << 20U;
constexpr std::size_t kLeastFrames = 2;
// Longer than a camera needs for its first frame.
constexpr Ticks kPatience = Ticks::FromMilliseconds(5000);

}  // namespace

CaptureQueues::CaptureQueues(bool has_audio, bool has_video) {
    Of(MediaKind::Audio).finished = !has_audio;
    Of(MediaKind::Video).finished = !has_video;
}

bool CaptureQueues::Push(MediaKind kind, FrameHandle frame) {
    const std::lock_guard lock(mutex_);
    if (Of(kind).cancelled) return false;
    if (LeaveOutPauses(kind, *frame))
        Add(kind, std::move(frame));
    else if (kind == MediaKind::Video)
        seen_in_pause_ = std::move(frame);
    return true;
}

// The frame's time becomes recorded time. False when nothing of it is recorded.
bool CaptureQueues::LeaveOutPauses(MediaKind kind, AVFrame& frame) const {
    if (kind == MediaKind::Audio) return pauses_.CutAudio(frame);
    const Ticks seen{frame.pts};
    frame.pts = pauses_.Recorded(seen).count;
    return !pauses_.Covers(seen);
}

void CaptureQueues::Add(MediaKind kind, FrameHandle frame) {
    Lane& lane = Of(kind);
    const Ticks time{frame->pts};
    if (!lane.first) lane.first = time;
    lane.bytes += BytesOf(*frame);
    lane.frames.push_back(std::move(frame));
    if (kind == MediaKind::Video) MakeRoom(lane);
    BeginIfKnown(time);
    changed_.notify_all();
}

void CaptureQueues::Pause(Ticks now) {
    const std::lock_guard lock(mutex_);
    seen_in_pause_.reset();
    pauses_.Begin(now);
}

void CaptureQueues::Resume(Ticks now) {
    const std::lock_guard lock(mutex_);
    pauses_.End(now);
    if (seen_in_pause_ && !Of(MediaKind::Video).cancelled)
        Add(MediaKind::Video, std::move(seen_in_pause_));
}

bool CaptureQueues::IsPaused() const {
    const std::lock_guard lock(mutex_);
    return pauses_.IsOpen();
}

FrameHandle CaptureQueues::TakeFront(Lane& lane) {
    FrameHandle frame = std::move(lane.frames.front());
    lane.frames.pop_front();
    lane.bytes -= BytesOf(*frame);
    return frame;
}

void CaptureQueues::MakeRoom(Lane& lane) {
    while (lane.frames.size() > kMostFrames ||
           (lane.frames.size() > kLeastFrames && lane.bytes > kMostFrameBytes)) {
        const FrameHandle oldest = TakeFront(lane);
        if (start_ && oldest->pts >= start_->count) ++dropped_;
    }
}

void CaptureQueues::BeginIfKnown(Ticks now) {
    if (start_) return;
    const Lane& audio = Of(MediaKind::Audio);
    const Lane& video = Of(MediaKind::Video);
    if (video.first)
        start_ = video.first;
    else if (audio.first && (video.finished || now - *audio.first >= kPatience))
        start_ = audio.first;
}

bool CaptureQueues::Pop(MediaKind kind, FrameHandle& frame) {
    std::unique_lock lock(mutex_);
    Lane& lane = Of(kind);
    changed_.wait(lock, [&] {
        const bool over = lane.finished && lane.frames.empty();
        return lane.cancelled || over || (start_ && !lane.frames.empty());
    });
    if (lane.cancelled || lane.frames.empty()) return false;
    frame = TakeFront(lane);
    frame->pts -= start_->count;
    return true;
}

void CaptureQueues::Finish(MediaKind kind) {
    const std::lock_guard lock(mutex_);
    Of(kind).finished = true;
    BeginIfKnown({});
    changed_.notify_all();
}

void CaptureQueues::Cancel(MediaKind kind) {
    const std::lock_guard lock(mutex_);
    Lane& lane = Of(kind);
    lane.cancelled = true;
    lane.frames.clear();
    lane.bytes = 0;
    changed_.notify_all();
}

std::optional<Ticks> CaptureQueues::Start() const {
    const std::lock_guard lock(mutex_);
    return start_;
}

Ticks CaptureQueues::Recorded(Ticks time) const {
    const std::lock_guard lock(mutex_);
    return pauses_.Recorded(time);
}

std::int64_t CaptureQueues::TakeDropped() {
    const std::lock_guard lock(mutex_);
    return std::exchange(dropped_, 0);
}

}  // namespace engine
