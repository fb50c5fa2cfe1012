// Turns decoded pictures into what an encoder wants: size, pixel format, limited-range BT.601
// colours, upright.
#pragma once

#include "engine/encoders/encoder.h"
#include "engine/pipeline/av_ptr.h"

namespace engine {

/// One thread. Pictures that fit already are passed on as they are. A change of the source's size
/// or format in mid-stream is followed.
class PictureConverter {
  public:
    /// @param turn  degrees clockwise by which the source is turned to stand upright
    PictureConverter(const PictureFormat& format, double turn, FramePool& frames);

    /// Keeps pts and pkt_duration. Throws platform::Error.
    FrameHandle Convert(FrameHandle frame);

  private:
    struct Shape {
        int width = 0;
        int height = 0;
        int format = AV_PIX_FMT_NONE;
        AVColorSpace space = AVCOL_SPC_UNSPECIFIED;
        AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
        bool operator==(const Shape&) const = default;
    };
    bool Fits(const Shape& shape) const;
    void Build(const Shape& shape);
    std::string Chain() const;

    PictureFormat format_;
    double turn_;
    FramePool& frames_;
    Shape shape_;
    AvPtr<AVFilterGraph> graph_;  // null = pictures fit
    AVFilterContext* source_ = nullptr;
    AVFilterContext* sink_ = nullptr;
};

}  // namespace engine
