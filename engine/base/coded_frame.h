// One coded frame on its way from its encoder to the outputs.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

#include "engine/base/ticks.h"

namespace engine {

/// What keeps a coded frame's bytes. It counts their holders, on any thread, and gets them back
/// when the last one lets go.
class CodedBytesOwner {
  public:
    CodedBytesOwner() = default;
    CodedBytesOwner(const CodedBytesOwner&) = delete;
    CodedBytesOwner& operator=(const CodedBytesOwner&) = delete;
    virtual ~CodedBytesOwner() = default;

    void Hold() noexcept { holders_.fetch_add(1, std::memory_order_relaxed); }
    void LetGo() noexcept {
        if (holders_.fetch_sub(1, std::memory_order_acq_rel) == 1) TakeBack();
    }

  private:
    virtual void TakeBack() noexcept = 0;

    std::atomic<int> holders_{0};
};

/// Bytes that are never changed. A copy holds the same ones; none outlives the pool of their owner.
class CodedBytes {
  public:
    CodedBytes() = default;
    CodedBytes(CodedBytesOwner& owner, std::span<const std::uint8_t> bytes) noexcept
        : owner_(&owner), bytes_(bytes) {
        owner_->Hold();
    }
    ~CodedBytes() {
        if (owner_ != nullptr) owner_->LetGo();
    }
    CodedBytes(const CodedBytes& other) noexcept : owner_(other.owner_), bytes_(other.bytes_) {
        if (owner_ != nullptr) owner_->Hold();
    }
    CodedBytes(CodedBytes&& other) noexcept
        : owner_(std::exchange(other.owner_, nullptr)), bytes_(std::exchange(other.bytes_, {})) {}
    CodedBytes& operator=(CodedBytes other) noexcept {
        std::swap(owner_, other.owner_);
        std::swap(bytes_, other.bytes_);
        return *this;
    }

    explicit operator bool() const { return owner_ != nullptr; }
    std::size_t size() const { return bytes_.size(); }
    operator std::span<const std::uint8_t>() const { return bytes_; }

  private:
    CodedBytesOwner* owner_ = nullptr;
    std::span<const std::uint8_t> bytes_;
};

/// Times count from the start of the session and are never negative. Frames of a stream that is not
/// reordered are shown in the order in which they are coded.
struct CodedFrame {
    int stream = 0;  // of OutputHeader::streams
    Ticks pts;
    Ticks dts;
    Ticks duration;
    bool key = false;
    std::int64_t audio_samples = 0;  // per channel that the frame adds to the stream
    CodedBytes bytes;
};

}  // namespace engine
