// How a camera gives its frames: what it offers, and which of that suits a recording best.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "engine/plan/camera_format.h"

namespace engine {

/// A pixel format of the kernel's video interface.
struct CameraPixelRow {
    enum class Kind { Colours, Jpeg, Greys };

    std::uint32_t code;   // V4L2_PIX_FMT_*
    const char* av_name;  // libavutil's; "" = each frame is a JPEG file
    Kind kind;
    bool swapped = false;  // the second and third plane
};

/// Those that can be recorded, the ones that are less work first.
std::span<const CameraPixelRow> CameraPixels();

/// Null for one that cannot be recorded.
const CameraPixelRow* FindCameraPixels(std::uint32_t code);

/// A side in pixels: `least`, or more by a multiple of `step`, which is at least 1.
struct CameraSide {
    std::int32_t least;
    std::int32_t most;
    std::int32_t step;
};

/// Any width with any height; a single size is one whose least and most are the same.
struct CameraSizes {
    CameraSide width;
    CameraSide height;
};

/// Any interval between the two.
struct CameraIntervals {
    CameraInterval shortest;
    CameraInterval longest;
};

/// What a camera says that it can do.
class CameraOffers {
  public:
    virtual ~CameraOffers() = default;
    virtual std::vector<std::uint32_t> PixelFormats() const = 0;
    virtual std::vector<CameraSizes> Sizes(std::uint32_t pixels) const = 0;
    /// None when it does not say.
    virtual std::vector<CameraIntervals> Intervals(std::uint32_t pixels, std::int32_t width,
                                                   std::int32_t height) const = 0;
};

/// The format with most of the requested pixels a second. Among those that have all of them: the
/// requested size, else the smallest larger one of the requested shape, else the smallest larger
/// one; of one size, raw frames before JPEG ones; then the rate that is least above the requested
/// one. Grey frames are taken from a camera that has no others. None when no format can be
/// recorded.
std::optional<CameraFormat> ChooseCameraFormat(const CameraOffers& offers, CameraRequest request);

}  // namespace engine
