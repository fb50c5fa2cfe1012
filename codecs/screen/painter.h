// Paints what the palette has no colours for, in rectangles that keep to their bits.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "codecs/common/picture_bits.h"
#include "codecs/common/task_team.h"
#include "codecs/screen/encoder.h"
#include "codecs/screen/packet.h"
#include "codecs/screen/rectangle_coder.h"
#include "codecs/screen/screen_state.h"

namespace codecs::screen {

class Painter {
  public:
    Painter(int width, int height, int threads);

    /// Adds tiles that rest and may be painted more finely, as many as there are bits for. True
    /// when others wait, or tiles that do not rest yet.
    bool AddResting(std::vector<std::uint8_t>& paint, const ScreenState& state,
                    const FrameRequest& request);

    /// Codes rectangles around the tiles of `paint` that are not 0, with the quantisers that fit
    /// the request, and notes those in the state.
    Rectangles Paint(std::span<const std::uint8_t> paint, PixelView source, PlaneView indices,
                     const FrameRequest& request, bool reconstructs, ScreenState& state);

    /// Of changing content, in the last frame; 0 = there was none.
    int Quantiser() const { return quantiser_; }
    /// What the rectangles of the last frame show.
    std::span<const std::vector<std::uint32_t>> Shown() const { return shown_; }

  private:
    struct Job {
        Rect rect;
        std::uint8_t kind = 0;
        std::int64_t tiles = 0;  // that are painted
        int quantiser = 1;
        std::vector<std::uint8_t> bytes;
    };

    int QuantiserFor(std::int64_t tiles, double bits, const FrameRequest& request) const;
    double CodeJobs(std::uint8_t kind, PixelView source, PlaneView indices, int mask,
                    bool reconstructs);
    void CodeMoving(PixelView source, PlaneView indices, int mask, const FrameRequest& request,
                    bool reconstructs);

    const Grid grid_;
    TaskTeam team_;
    RectangleCoder coder_;
    std::vector<Job> jobs_;
    std::size_t job_count_ = 0;
    std::vector<std::uint8_t> painted_;  // tiles
    std::vector<std::vector<std::uint32_t>> shown_;
    double moving_texture_ = 0;  // bits of a tile times (quantiser + offset)
    double resting_texture_ = 0;
    int quantiser_ = 0;
};

}  // namespace codecs::screen
