// From decoded audio to the audio of the session: cut at the marks to the sample, gaps filled with
// silence, overlaps cut, resampled and mixed to the encoder's format, in frames of its size.
#pragma once

#include <atomic>
#include <optional>

#include "engine/base/av/av_ptr.h"
#include "engine/base/av/encoder.h"
#include "engine/base/av/frame_sink.h"
#include "engine/filters/drift_control.h"
#include "engine/plan/encode_plan.h"

namespace engine {

/// What the timestamps of audio mean.
enum class AudioClock {
    Media,   // a file's: the samples are right, and a difference of less than 20 ms is jitter
    Capture  // when a device heard it: the device's own clock is made to follow it by resampling,
             // and a difference of more than 50 ms is a gap or an overlap
};

/// One thread. Audio starts at session time 0: what comes later is led in by silence.
class AudioResampler {
  public:
    /// @param end   session time at which the audio ends; 0 = with its source
    /// @param stop  once true, no gap of a file is filled any more; must outlive this object
    AudioResampler(const AudioFrameFormat& format, const Downmix& downmix, AudioClock clock,
                   Ticks end, const std::atomic<bool>& stop, FramePool& frames);

    /// The frames that `next` gets count samples in pts. False when no more frames are wanted.
    bool Push(FrameHandle frame, const FrameSink& next);
    bool Finish(const FrameSink& next);

  private:
    struct Shape {
        int sampling_rate = 0;
        int format = AV_SAMPLE_FMT_NONE;
        int channels = 0;
        std::uint64_t mask = 0;
        bool operator==(const Shape&) const = default;
    };
    static Shape ShapeOf(const AVFrame& frame);
    bool Open(const AVFrame& frame, const FrameSink& next);
    std::int64_t Reached() const;
    void FollowDevice(const AVFrame& frame);
    bool FeedSilence(std::int64_t samples, const FrameSink& next);
    bool Fetch(const FrameSink& next);
    bool Drain(const FrameSink& next);
    bool Convert(const std::uint8_t** data, int samples, const FrameSink& next);
    void NewOutput();

    AudioFrameFormat format_;
    Downmix downmix_;
    AudioClock clock_;
    Ticks end_;
    const std::atomic<bool>& stop_;
    FramePool& frames_;
    AvPtr<AVBufferPool> buffers_;
    AvPtr<SwrContext> resampler_;
    Shape shape_;
    bool started_ = false;
    std::int64_t fed_ = 0;      // input samples since session time 0, at the input's rate
    DriftControl drift_;        // of a device's clock
    FrameHandle output_;        // the frame being filled
    std::int64_t emitted_ = 0;  // output samples before it
};

}  // namespace engine
