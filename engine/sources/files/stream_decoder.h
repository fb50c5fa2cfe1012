// Decodes one stream of an input into frames with session times.
#pragma once

#include <string>

#include "engine/base/av/av_ptr.h"
#include "engine/base/av/frame_sink.h"
#include "engine/base/ticks.h"
#include "engine/plan/encode_plan.h"

namespace engine {

/// One thread.
class StreamDecoder {
  public:
    /// @param start  the stream's time that is session time 0
    /// Throws platform::Error when the decoder cannot be opened.
    StreamDecoder(const AVStream& stream, Ticks start, const std::string& path, FramePool& frames);

    /// Decodes a packet, null for the frames that are left at the end. What cannot be decoded is
    /// passed over. False when the sink wants no more.
    bool Decode(const AVPacket* packet, const FrameSink& sink);
    /// Session time at which the last frame ended.
    Ticks End() const { return last_end_; }

  private:
    void SetTimes(AVFrame& frame);
    void SetFieldOrder(AVFrame& frame) const;

    FramePool& frames_;
    AVRational time_base_;
    Ticks start_;
    Ticks nominal_duration_;  // of a video frame; 0 = unknown
    AvPtr<AVCodecContext> codec_;
    int broken_at_end_ = 0;
    bool started_ = false;
    Ticks last_;
    Ticks last_end_;
};

}  // namespace engine
