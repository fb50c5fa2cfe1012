// Encodes frames of a screen as Windows Media Video 9 Screen with 15 bits a pixel.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "codecs/screen/encoder.h"
#include "codecs/screen/plane_view.h"
#include "codecs/screen/stream_header.h"

namespace codecs::screen {

/// Every pixel is exact, whatever that takes. One thread at a time.
class FifteenBitEncoder {
  public:
    explicit FifteenBitEncoder(const EncoderSettings& settings);

    /// What stands after the stream's picture format.
    std::vector<std::uint8_t> StreamHeader() const;
    /// Of the request, only `key` is looked at.
    /// @param pixels  0RRRRRGG GGGBBBBB, rows from the bottom up without gaps
    CodedFrame Encode(std::span<const std::uint16_t> pixels, const FrameRequest& request);
    /// As if the frame coded last had not been.
    void Forget();

  private:
    Rect ChangedArea() const;

    StreamFormat format_;
    std::vector<std::uint16_t> current_, before_;  // empty until there is a frame
    std::vector<std::uint8_t> packet_;
};

}  // namespace codecs::screen
