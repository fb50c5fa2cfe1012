// What a decoder has after each frame.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "codecs/screen/packet.h"
#include "codecs/screen/plane_view.h"
#include "codecs/screen/stream_header.h"

namespace codecs::screen {

/// The palette, the index of each pixel, and the colours that are shown.
class Receiver {
  public:
    explicit Receiver(const StreamFormat& format);

    /// @param pictures  what the rectangles of the frame show, as RectangleCoder reconstructs them;
    ///                  of those that are grey, nothing
    void Take(const FrameParts& frame, std::span<const std::vector<std::uint32_t>> pictures);

    /// From the bottom row up.
    PlaneView Indices() const { return {indices_.data(), format_.width}; }
    std::span<const std::uint32_t> Shown() const { return shown_; }

  private:
    void Paint(const CodedRectangle& coded, std::optional<int> mask,
               std::span<const std::uint32_t> picture);

    StreamFormat format_;
    std::vector<std::uint8_t> indices_;
    std::vector<std::uint32_t> shown_;
    std::vector<std::uint32_t> before_;  // shown, of the frame before
};

}  // namespace codecs::screen
