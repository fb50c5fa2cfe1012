// Uncompressed frames. RGB has rows from the bottom up and padded to four bytes, as a
// device-independent bitmap has them, 24 bits a pixel unless another format is asked for; of the
// others, planes or packed rows follow each other from the top.
#pragma once

#include "engine/base/av/coded_frame_pool.h"
#include "engine/base/av/encoder.h"
#include "engine/plan/encode_plan.h"

namespace engine {

class FullFrameEncoder final : public VideoEncoder {
  public:
    FullFrameEncoder(const VideoPlan& plan, CodedFramePool& packets);

    VideoFrameFormat Format() const override;
    StreamHeader Header() const override;
    bool Encode(AVFrame& frame, const CodedFrameSink& sink) override;
    bool Finish(const CodedFrameSink&) override { return true; }

  private:
    void WriteRows(const AVFrame& frame, std::uint8_t* to) const;
    void WritePlanes(const AVFrame& frame, std::uint8_t* to) const;

    VideoPlan plan_;
    CodedFramePool& packets_;
    platform::PixelFormatRow pixels_;
    AVPixelFormat format_;
    std::size_t row_bytes_;  // of RGB
    std::size_t frame_bytes_;
    AvPtr<AVBufferPool> buffers_;
};

}  // namespace engine
