// A chain of libavfilter's filters for the pictures of one stream.
#pragma once

#include <string>

#include "engine/base/av/av_ptr.h"

namespace engine {

/// What a chain is built for: another shape needs another chain.
struct PictureShape {
    int width = 0;
    int height = 0;
    int format = AV_PIX_FMT_NONE;
    AVColorSpace space = AVCOL_SPC_UNSPECIFIED;
    AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
    bool operator==(const PictureShape&) const = default;
};
PictureShape ShapeOf(const AVFrame& frame);

/// One thread.
class PictureFilter {
  public:
    /// @param chain    in libavfilter's language, not empty
    /// @param subject  opens the description of an error, and must outlive the filter
    /// Throws platform::Error.
    PictureFilter(const std::string& chain, const PictureShape& shape, const char* subject);

    /// Takes what the frame refers to; null ends the stream. Times are ticks.
    void Push(AVFrame* frame);
    /// False = no picture is ready.
    bool Pull(AVFrame& frame);

  private:
    AvPtr<AVFilterGraph> graph_;
    AVFilterContext* source_ = nullptr;
    AVFilterContext* sink_ = nullptr;
    const char* subject_;
};

}  // namespace engine
