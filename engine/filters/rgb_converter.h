// Pixels of a screen into a video encoder's, as fast as can be.
#pragma once

#include "engine/base/av/av_ptr.h"
#include "engine/base/av/encoder.h"

namespace engine {

/// One thread. From packed RGB of 32 bits a pixel to 4:2:0 of the same size, limited range.
class RgbConverter {
  public:
    /// @param matrix  BT.601 or BT.709
    RgbConverter(int width, int height, AVColorSpace matrix, FramePool& frames);

    static bool Takes(int pixels);

    /// With the frame's times and properties. Throws platform::Error.
    FrameHandle Convert(const AVFrame& frame);

  private:
    int width_;
    int height_;
    AVColorSpace matrix_;
    FramePool& frames_;
    int stride_;  // bytes of a row of luma; chroma has half
    AvPtr<AVBufferPool> buffers_;
};

}  // namespace engine
