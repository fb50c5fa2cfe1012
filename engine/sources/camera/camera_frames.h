// Makes frames of what a camera's driver has put into its memory.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "engine/base/av/av_ptr.h"

struct v4l2_pix_format;

namespace engine {

/// One thread; the frames may go to others.
class CameraFrameMaker {
  public:
    virtual ~CameraFrameMaker() = default;
    /// A frame that owns its pixels, without times. Null when the frame is not whole: bytes are
    /// missing, or they are no JPEG file. A camera whose JPEG files are all a little wrong is
    /// forgiven after a few.
    virtual FrameHandle Make(std::span<const std::uint8_t> bytes) = 0;
};

/// @param layout  as the driver has set it; its pixel format is one of CameraPixels
/// @param frames  outlives the object and its frames
std::unique_ptr<CameraFrameMaker> MakeCameraFrameMaker(const v4l2_pix_format& layout,
                                                       FramePool& frames);

}  // namespace engine
