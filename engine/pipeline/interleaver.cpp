#include "engine/pipeline/interleaver.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace engine {
namespace {

// How often a writer with a full and an empty stream looks whether the empty one can still fill:
// nothing wakes it when the input's reader comes to a halt.
constexpr std::chrono::milliseconds kStarvedCheck{5};
constexpr std::chrono::seconds kLongestWaitOnClock{1};
// Of the time between a frame and who sees it.
constexpr std::chrono::milliseconds kQuiet{50};

}  // namespace

Interleaver::Interleaver(bool has_audio, bool has_video, bool live, bool watched,
                         std::function<bool()> starved)
    : live_(live), watched_(watched), starved_(std::move(starved)), idle_since_(Clock::now()) {
    audio_.finished = !has_audio;
    video_.finished = !has_video;
}

bool Interleaver::Push(MediaKind kind, CodedFrame frame) {
    std::unique_lock lock(mutex_);
    Lane& lane = Of(kind);
    freed_.wait(lock, [&] { return cancelled_ || !lane.Full(); });
    if (cancelled_) return false;
    lane.bytes += frame.bytes.size();
    lane.frames.push_back({std::move(frame), Clock::now()});
    if (KnowsNext() || IsFull()) filled_.notify_one();
    return true;
}

void Interleaver::Finish(MediaKind kind) {
    const std::lock_guard lock(mutex_);
    Of(kind).finished = true;
    filled_.notify_one();
}

void Interleaver::Cancel() {
    const std::lock_guard lock(mutex_);
    cancelled_ = true;
    freed_.notify_all();
}

bool Interleaver::Lane::HasWaited(Clock::time_point now) const {
    if (frames.empty()) return false;
    return frames.back().frame.dts - frames.front().frame.dts >= kLongestWait ||
           now - frames.front().since >= kLongestWaitOnClock;
}

bool Interleaver::KnowsNext() const {
    if (!audio_.Awaited() && !video_.Awaited()) return true;
    if (!live_) return false;
    const Clock::time_point now = Clock::now();
    return IsFull() || audio_.HasWaited(now) || video_.HasWaited(now);
}

// The time at which the oldest frame has waited long enough, or at which nothing has come for long.
Interleaver::Clock::time_point Interleaver::WaitsUntil() const {
    Clock::time_point since = Clock::time_point::max();
    for (const Lane* lane : {&audio_, &video_})
        if (!lane->frames.empty()) since = std::min(since, lane->frames.front().since);
    if (since != Clock::time_point::max()) return since + kLongestWaitOnClock;
    return watched_ && !quiet_ ? idle_since_ + kQuiet : idle_since_ + kLongestWaitOnClock;
}

Interleaver::Lane* Interleaver::Next() {
    if (audio_.frames.empty() && video_.frames.empty()) return nullptr;
    if (audio_.frames.empty()) return &video_;
    if (video_.frames.empty()) return &audio_;
    return video_.frames.front().frame.dts < audio_.frames.front().frame.dts ? &video_ : &audio_;
}

Interleaver::Popped Interleaver::Pop(MediaKind& kind, CodedFrame& frame) {
    std::unique_lock lock(mutex_);
    while (!KnowsNext()) {
        if (live_) {
            filled_.wait_until(lock, WaitsUntil());
            const Clock::time_point now = Clock::now();
            if (!audio_.frames.empty() || !video_.frames.empty() || KnowsNext()) continue;
            if (watched_ && !quiet_ && now - idle_since_ >= kQuiet) {
                quiet_ = true;
                return Popped::Quiet;
            }
            if (now - idle_since_ < kLongestWaitOnClock) continue;
            idle_since_ = now;
            return Popped::Nothing;
        }
        if (!IsFull())
            filled_.wait(lock);
        else if (starved_())
            break;
        else
            filled_.wait_for(lock, kStarvedCheck);
    }
    Lane* lane = Next();
    if (lane == nullptr) return Popped::End;
    idle_since_ = Clock::now();
    quiet_ = false;
    const bool was_full = IsFull();
    kind = lane == &audio_ ? MediaKind::Audio : MediaKind::Video;
    frame = std::move(lane->frames.front().frame);
    lane->frames.pop_front();
    lane->bytes -= frame.bytes.size();
    frame.dts = last_dts_ = std::max(frame.dts, last_dts_);
    if (was_full) freed_.notify_all();
    return Popped::Frame;
}

}  // namespace engine
