// Turns decoded frames into what an encoder wants: upright, clipped, size, pixel format, and the
// colours that players expect of the size.
#pragma once

#include <optional>
#include <string>

#include "engine/base/av/encoder.h"
#include "engine/filters/frame_filter.h"
#include "engine/filters/rgb_converter.h"
#include "engine/plan/encode_plan.h"

namespace engine {

/// One thread. Frames that fit already are passed on as they are. A change of the source's size
/// or format in mid-stream is followed.
class FrameConverter {
  public:
    /// @param plan  what is clipped, which pixels the frame goes through, whether it has fields
    /// @param turn  degrees clockwise by which the source is turned to stand upright
    FrameConverter(const VideoPlan& plan, const VideoFrameFormat& format, double turn,
                   FramePool& frames);

    /// Keeps pts and pkt_duration. Throws platform::Error.
    FrameHandle Convert(FrameHandle frame);

  private:
    bool IsInPlace(const FrameShape& shape) const;
    bool Fits(const FrameShape& shape) const;
    void Open(const FrameShape& shape);
    std::string Chain(const FrameShape& shape) const;

    Margins crop_;
    std::string through_;  // a filter, or none
    const char* scaling_ = "";
    VideoFrameFormat format_;
    AVColorSpace matrix_;
    double turn_;
    FramePool& frames_;
    FrameShape shape_;
    std::optional<RgbConverter> rgb_converter_;
    std::optional<FrameFilter> filter_;  // neither = frames fit
};

}  // namespace engine
