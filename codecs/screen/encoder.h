// Encodes frames of a screen as Windows Media Video 9 Screen.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "codecs/screen/rectangle_coder.h"

namespace codecs::screen {

struct EncoderSettings {
    int width = 1;  // 1 to 4096
    int height = 1;
    double frames_per_second = 5;  // hints of the stream's header
    double rate_bps = 0;
    int threads = 1;  // that code rectangles side by side; changes no output
    /// How far each channel of a colour that the palette has no place for may be from the one that
    /// stands for it.
    int tolerance = 2;
    bool quick = false;  // key frames as runs: larger, in half of the time
    /// Keeps what a decoder shows, which nothing else needs.
    bool reconstructs = false;
};

/// Quantisers are those of the rectangles that show what the palette cannot, 1 to 31.
struct FrameRequest {
    double seconds = 0;  // when it is shown; not decreasing
    bool key = false;    // the first frame is one whatever is asked
    /// What may differ from the frame coded last, from the bottom row up; none = anything.
    std::optional<Rect> changed = std::nullopt;
    /// What the rectangles of changing content should not pass, by coarser quantisers; and those
    /// that show again, more finely, what rests.
    double moving_bits = 1e9;
    double resting_bits = 1e9;
    int finest = 1;
    int coarsest = 31;
};

struct CodedFrame {
    std::span<const std::uint8_t> data;  // valid until the next call
    bool key = false;
    bool unchanged = false;  // shows what the frame before does
    bool exact = false;      // every pixel of it
    /// The same frame again, half a second later, would make it sharper.
    bool may_sharpen = false;
    int quantiser = 0;          // of changing content; 0 = the frame has none
    double rectangle_bits = 0;  // of `data`, for all rectangles
};

/// Text, window frames and all else whose colours the palette has are exact, whatever is asked. One
/// thread at a time.
class Encoder {
  public:
    explicit Encoder(const EncoderSettings& settings);
    ~Encoder();
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    /// What stands after the stream's picture format.
    std::vector<std::uint8_t> StreamHeader() const;

    /// The pixels of a frame are looked at again when the next one is coded, and after Forget with
    /// the one after that: they stay where they are until two later calls of Encode are through.
    CodedFrame Encode(PixelView source, const FrameRequest& request);
    /// As if the frame coded last had not been.
    void Forget();

    /// What a decoder shows of the frame coded last, where the settings ask for it; rows from the
    /// bottom up. Forget does not undo it.
    std::span<const std::uint32_t> Shown() const;

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace codecs::screen
