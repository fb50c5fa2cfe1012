// Compares streams with an independent decoder: every pixel must be what the encoder says.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "codecs/screen/stream_header.h"

namespace screen_conformance {

/// Takes a stream's packets one by one. The decoder must accept all without a word.
class ScreenCheck {
  public:
    explicit ScreenCheck(const codecs::screen::StreamFormat& format);
    ~ScreenCheck();

    /// @param shown  0x??RRGGBB from the bottom row up; of a stream of 15 bits, 0RRRRRGG GGGBBBBB
    /// Returns the first fault; empty = none.
    std::string Take(std::span<const std::uint8_t> packet, std::span<const std::uint32_t> shown);

  private:
    struct Decoder;

    codecs::screen::StreamFormat format_;
    std::unique_ptr<Decoder> decoder_;
};

}  // namespace screen_conformance
