#include "engine/outputs/live/live_queue.h"

#include <algorithm>
#include <utility>

namespace engine {

void LiveQueue::Push(LivePacketPtr packet) {
    if (waits_ && !packet->join_point) {
        if (joined_) withheld_ += static_cast<std::uint64_t>(packet->frames);
        return;
    }
    waits_ = false;
    joined_ = true;
    bytes_ += packet->bytes.size();
    packets_.push_back(std::move(packet));
    if (!IsTooLong()) return;
    ++overruns_;
    DropGroups();
}

LivePacketPtr LiveQueue::Pop() {
    if (packets_.empty()) return nullptr;
    LivePacketPtr packet = std::move(packets_.front());
    packets_.pop_front();
    bytes_ -= packet->bytes.size();
    if (packets_.empty()) overruns_ = 0;
    return packet;
}

std::uint64_t LiveQueue::TakeWithheld() { return std::exchange(withheld_, 0); }

bool LiveQueue::IsTooLong() const {
    return bytes_ > limits_.bytes ||
           packets_.back()->send_ms - packets_.front()->send_ms > limits_.span_ms;
}

void LiveQueue::DropGroups() {
    const auto last = std::find_if(packets_.rbegin(), packets_.rend(),
                                   [](const LivePacketPtr& packet) { return packet->join_point; });
    auto count = packets_.rend() - last;  // up to and with that one
    if (count > 0) --count;
    const bool none = last == packets_.rend() || count == 0;
    if (none) count = static_cast<std::ptrdiff_t>(packets_.size());
    for (; count > 0; --count) DropFront();
    waits_ = none;
}

void LiveQueue::BeginAnew() {
    while (!packets_.empty()) DropFront();
    waits_ = true;
    overruns_ = 0;
}

void LiveQueue::DropFront() {
    withheld_ += static_cast<std::uint64_t>(packets_.front()->frames);
    bytes_ -= packets_.front()->bytes.size();
    packets_.pop_front();
}

}  // namespace engine
