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

bool Interleaver::Push(MediaKind kind, CodedPacket packet) {
    std::unique_lock lock(mutex_);
    Lane& lane = Of(kind);
    changed_.wait(lock, [&] { return cancelled_ || !lane.Full(); });
    if (cancelled_) return false;
    lane.bytes += static_cast<std::size_t>(packet.data->size);
    lane.packets.push_back(std::move(packet));
    lock.unlock();
    changed_.notify_all();
    return true;
}

void Interleaver::Finish(MediaKind kind) {
    const std::lock_guard lock(mutex_);
    Of(kind).finished = true;
    changed_.notify_all();
}

void Interleaver::Cancel() {
    const std::lock_guard lock(mutex_);
    cancelled_ = true;
    changed_.notify_all();
}

Interleaver::Lane* Interleaver::Next() {
    if (audio_.packets.empty() && video_.packets.empty()) return nullptr;
    if (audio_.packets.empty()) return &video_;
    if (video_.packets.empty()) return &audio_;
    return video_.packets.front().decode < audio_.packets.front().decode ? &video_ : &audio_;
}

bool Interleaver::Pop(MediaKind& kind, CodedPacket& packet) {
    std::unique_lock lock(mutex_);
    for (;;) {
        const bool awaited = audio_.Awaited() || video_.Awaited();
        if (!awaited) break;
        const bool full = audio_.Full() || video_.Full();
        if (live_ && (full || audio_.HasWaited() || video_.HasWaited())) break;
        if (full && starved_()) break;
        if (full)
            changed_.wait_for(lock, kStarvedCheck);
        else
            changed_.wait(lock);
    }
    Lane* lane = Next();
    if (lane == nullptr) return false;
    kind = lane == &audio_ ? MediaKind::Audio : MediaKind::Video;
    packet = std::move(lane->packets.front());
    lane->packets.pop_front();
    lane->bytes -= static_cast<std::size_t>(packet.data->size);
    packet.decode = last_decode_ = std::max(packet.decode, last_decode_);
    lock.unlock();
    changed_.notify_all();
    return true;
}

}  // namespace engine
