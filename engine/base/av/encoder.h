// What the pipeline asks of an encoder: one interface for video, one for audio.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "codecs/common/two_pass_plan.h"
#include "engine/base/av/av_ptr.h"
#include "engine/base/coded_frame.h"
#include "engine/base/stream_header.h"
#include "engine/base/ticks.h"

namespace engine {

/// False = no more frames are wanted.
using CodedFrameSink = std::function<bool(CodedFrame frame)>;

/// Frames that were dropped to keep the rate, and about what they would have taken.
struct DroppedFrames {
    std::int64_t frames = 0;
    std::int64_t bytes = 0;
};

/// What an encoder wants its frames to be.
struct VideoFrameFormat {
    AVPixelFormat pixels = AV_PIX_FMT_YUV420P;
    int width = 0;
    int height = 0;
};

struct AudioFrameFormat {
    AVSampleFormat samples = AV_SAMPLE_FMT_S16;
    int sampling_rate = 0;
    int channels = 0;
    int frame_samples = 0;  // per frame and channel; the last frame may be shorter
};

/// One thread at a time. Times of the frames are pts and pkt_duration in ticks of session time.
class VideoEncoder {
  public:
    virtual ~VideoEncoder() = default;
    virtual VideoFrameFormat Format() const = 0;
    virtual StreamHeader Header() const = 0;
    /// Whether threads of its own do the work: Encode then takes no time, but may wait for them.
    virtual bool CodesAside() const { return false; }
    /// May change the frame's own fields or move it out, never change its pixels. False when the
    /// consumer wants no more. Throws platform::Error.
    virtual bool Encode(AVFrame& frame, const CodedFrameSink& sink) = 0;
    virtual bool Finish(const CodedFrameSink& sink) = 0;
    virtual DroppedFrames TakeDroppedFrames() { return {}; }  // since the last call
    /// What the frames have taken, after Finish.
    virtual std::vector<codecs::FirstPassGop> TakeFirstPass() { return {}; }
};

/// One thread at a time. The pts of a frame counts samples from the start of the session; frames
/// follow each other without gaps and have room for `frame_samples`.
class AudioEncoder {
  public:
    virtual ~AudioEncoder() = default;
    virtual AudioFrameFormat Format() const = 0;
    virtual StreamHeader Header() const = 0;
    virtual bool Encode(AVFrame& frame, const CodedFrameSink& sink) = 0;
    virtual bool Finish(const CodedFrameSink& sink) = 0;
    /// For the encoder of the second pass, after Finish.
    virtual std::vector<float> TakeFirstPass() { return {}; }
    /// What the person should know of how the sound suits the codec, a sentence; after Finish.
    virtual std::string NoteText() const { return {}; }
};

}  // namespace engine
