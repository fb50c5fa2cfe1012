// Turns decoded pictures into what an encoder wants: upright, clipped, size, pixel format,
// limited-range BT.601 colours.
#pragma once

#include <optional>
#include <string>

#include "engine/base/av/encoder.h"
#include "engine/filters/picture_filter.h"
#include "engine/filters/rgb_converter.h"
#include "engine/plan/encode_plan.h"

namespace engine {

/// One thread. Pictures that fit already are passed on as they are. A change of the source's size
/// or format in mid-stream is followed.
class PictureConverter {
  public:
    /// @param plan  what is clipped, which pixels the picture goes through, whether it has fields
    /// @param turn  degrees clockwise by which the source is turned to stand upright
    PictureConverter(const VideoPlan& plan, const PictureFormat& format, double turn,
                     FramePool& frames);

    /// Keeps pts and pkt_duration. Throws platform::Error.
    FrameHandle Convert(FrameHandle frame);

  private:
    bool IsInPlace(const PictureShape& shape) const;
    bool Fits(const PictureShape& shape) const;
    void Open(const PictureShape& shape);
    std::string Chain() const;

    Margins crop_;
    std::string through_;  // a filter, or none
    const char* scaling_ = "";
    PictureFormat format_;
    double turn_;
    FramePool& frames_;
    PictureShape shape_;
    std::optional<RgbConverter> rgb_converter_;
    std::optional<PictureFilter> filter_;  // neither = pictures fit
};

}  // namespace engine
