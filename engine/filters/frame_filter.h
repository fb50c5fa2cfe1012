// A chain of libavfilter's filters for the frames of one stream.
#pragma once

#include <memory>
#include <string>

#include "engine/base/av/av_ptr.h"

extern "C" {
#include <libavfilter/avfilter.h>
}

namespace engine {

/// What a chain is built for: another shape needs another chain.
struct FrameShape {
    int width = 0;
    int height = 0;
    int format = AV_PIX_FMT_NONE;
    AVColorSpace space = AVCOL_SPC_UNSPECIFIED;
    AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
    AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
    AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
    bool operator==(const FrameShape&) const = default;
};
FrameShape ShapeOf(const AVFrame& frame);

/// One thread.
class FrameFilter {
  public:
    /// @param chain    in libavfilter's language, not empty
    /// @param subject  opens the description of an error, and must outlive the filter
    /// Throws platform::Error.
    FrameFilter(const std::string& chain, const FrameShape& shape, const char* subject);

    /// Takes what the frame refers to; null ends the stream. Times are ticks.
    void Push(AVFrame* frame);
    /// False = no frame is ready.
    bool Pull(AVFrame& frame);

  private:
    struct GraphDeleter {
        void operator()(AVFilterGraph* graph) const;
    };

    std::unique_ptr<AVFilterGraph, GraphDeleter> graph_;
    AVFilterContext* source_ = nullptr;
    AVFilterContext* sink_ = nullptr;
    const char* subject_;
};

}  // namespace engine
