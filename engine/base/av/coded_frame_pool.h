// The packets of encoders, as shells that are used again and as the bytes of coded frames.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include "engine/base/av/av_ptr.h"
#include "engine/base/coded_frame.h"

namespace engine {

/// Any thread. Allocates until there are as many packets as are ever under way at once. Outlives
/// all that it gives.
class CodedFramePool {
  public:
    CodedFramePool() = default;
    CodedFramePool(const CodedFramePool&) = delete;
    CodedFramePool& operator=(const CodedFramePool&) = delete;

    PacketHandle Get() { return packets_.Get(); }
    /// The packet's data, which are its own until the last holder lets go of them.
    CodedBytes Share(PacketHandle packet);
    /// The same of bytes that their maker needs back.
    CodedBytes Copy(std::span<const std::uint8_t> bytes);

  private:
    class Shared final : public CodedBytesOwner {
      public:
        explicit Shared(CodedFramePool& pool) : pool_(pool) {}
        PacketHandle packet;
        std::vector<std::uint8_t> copy;  // keeps its memory for the next one, if that is small

      private:
        void TakeBack() noexcept override { pool_.PutBack(*this); }
        CodedFramePool& pool_;
    };

    Shared& Next();
    void PutBack(Shared& shared) noexcept;

    PacketPool packets_;
    std::mutex mutex_;
    std::vector<std::unique_ptr<Shared>> all_;
    std::vector<Shared*> idle_;
};

}  // namespace engine
