// Frames for captured audio, their samples in buffers that are used again.
#pragma once

#include "engine/base/av/av_ptr.h"

namespace engine {

struct CapturedFormat {
    AVSampleFormat samples = AV_SAMPLE_FMT_S16;  // packed
    int sampling_rate = 0;
    int channels = 0;
    std::uint64_t mask = 0;  // FFmpeg's channels, in the order of its bits; 0 = the usual ones

    int BytesPerSample() const { return av_get_bytes_per_sample(samples) * channels; }
    Ticks Length(std::int64_t count) const { return {count * Ticks::kPerSecond / sampling_rate}; }
};

/// One thread; the frames may go to others.
class AudioFrames {
  public:
    AudioFrames(const CapturedFormat& format, FramePool& frames)
        : format_(format), frames_(frames) {}

    /// A frame of `count` samples, above 0, for the caller to fill.
    FrameHandle New(int count, Ticks pts);
    FrameHandle NewSilence(int count, Ticks pts);

    const CapturedFormat& Format() const { return format_; }

  private:
    CapturedFormat format_;
    FramePool& frames_;
    AvPtr<AVBufferPool> buffers_;
    std::size_t buffer_size_ = 0;
};

}  // namespace engine
