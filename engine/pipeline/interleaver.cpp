#include "engine/pipeline/interleaver.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace engine {
namespace {

// How often a writer with a full and an empty stream looks whether the empty one can still fill:
// nothing wakes it when the input's reader comes to a halt.
constexpr std::chrono::milliseconds kStarvedCheck{5};

}  // namespace

Interleaver::Interleaver(bool has_audio, bool has_video, bool live, std::function<bool()> starved)
    : live_(live), starved_(std::move(starved)) {
    audio_.finished = !has_audio;
    video_.finished = !has_video;
}

bool Interleaver::Push(MediaKind kind, CodedFrame frame) {
    std::unique_lock lock(mutex_);
    Lane& lane = Of(kind);
    freed_.wait(lock, [&] { return cancelled_ || !lane.Full(); });
    if (cancelled_) return false;
    lane.bytes += frame.bytes.size();
    lane.frames.push_back(std::move(frame));
    lane.begun = true;
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

bool Interleaver::KnowsNext() const {
    if (!audio_.Awaited() && !video_.Awaited()) return true;
    return live_ && (IsFull() || HasWaitedEnough());
}

bool Interleaver::HasWaitedEnough() const {
    return audio_.HasWaited(kLongestWait) ||
           video_.HasWaited(audio_.begun ? kLongestWait : kLongestStart);
}

Interleaver::Lane* Interleaver::Next() {
    if (audio_.frames.empty() && video_.frames.empty()) return nullptr;
    if (audio_.frames.empty()) return &video_;
    if (video_.frames.empty()) return &audio_;
    return video_.frames.front().dts < audio_.frames.front().dts ? &video_ : &audio_;
}

bool Interleaver::Pop(MediaKind& kind, CodedFrame& frame) {
    std::unique_lock lock(mutex_);
    while (!KnowsNext()) {
        if (!IsFull())
            filled_.wait(lock);
        else if (starved_())
            break;
        else
            filled_.wait_for(lock, kStarvedCheck);
    }
    Lane* lane = Next();
    if (lane == nullptr) return false;
    const bool was_full = IsFull();
    kind = lane == &audio_ ? MediaKind::Audio : MediaKind::Video;
    frame = std::move(lane->frames.front());
    lane->frames.pop_front();
    lane->bytes -= frame.bytes.size();
    frame.dts = last_dts_ = std::max(frame.dts, last_dts_);
    if (was_full) freed_.notify_all();
    return true;
}

}  // namespace engine
