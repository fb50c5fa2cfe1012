#include "engine/base/av/coded_frame_pool.h"

#include <cstddef>
#include <utility>

namespace engine {
namespace {

// A pool that keeps what its largest packets took has as much for each of them in the end.
constexpr std::size_t kMostKeptBytes = 1024;

}  // namespace

CodedFramePool::Shared& CodedFramePool::Next() {
    const std::lock_guard lock(mutex_);
    if (idle_.empty()) {
        all_.push_back(std::make_unique<Shared>(*this));
        idle_.reserve(all_.capacity());  // so that none that comes back needs memory
        idle_.push_back(all_.back().get());
    }
    Shared& shared = *idle_.back();
    idle_.pop_back();
    return shared;
}

CodedBytes CodedFramePool::Share(PacketHandle packet) {
    Shared& shared = Next();
    shared.packet = std::move(packet);
    return {shared, {shared.packet->data, static_cast<std::size_t>(shared.packet->size)}};
}

CodedBytes CodedFramePool::Copy(std::span<const std::uint8_t> bytes) {
    Shared& shared = Next();
    shared.copy.assign(bytes.begin(), bytes.end());
    return {shared, shared.copy};
}

void CodedFramePool::PutBack(Shared& shared) noexcept {
    shared.packet.reset();
    if (shared.copy.capacity() > kMostKeptBytes) std::vector<std::uint8_t>().swap(shared.copy);
    const std::lock_guard lock(mutex_);
    idle_.push_back(&shared);
}

}  // namespace engine
