// Audio through libavcodec's encoder of the standard Windows Media Audio bitstream.
#pragma once

#include "engine/base/av/coded_frame_pool.h"
#include "engine/base/av/encoder.h"
#include "engine/plan/encode_plan.h"

namespace engine {

/// The bitstream overlaps frames: a packet completes the audio of the frame before, and decoders
/// swallow the audio of a stream's first two packets. So the encoder is given a frame of silence
/// first and last, and packets carry the time of the audio that they complete (the first two, time
/// 0): every sample is heard, at its own time.
class AvAudioEncoder final : public AudioEncoder {
  public:
    AvAudioEncoder(const AudioPlan& plan, CodedFramePool& packets);

    AudioFrameFormat Format() const override;
    StreamHeader Header() const override;
    bool Encode(AVFrame& frame, const CodedFrameSink& sink) override;
    bool Finish(const CodedFrameSink& sink) override;

  private:
    bool EncodeSilence(std::int64_t samples_completed, const CodedFrameSink& sink);
    bool Send(AVFrame& frame, std::int64_t samples_completed, const CodedFrameSink& sink);

    AudioPlan plan_;
    CodedFramePool& packets_;
    AvPtr<AVCodecContext> codec_;
    AvPtr<AVFrame> silence_;
    std::int64_t fed_frames_ = 0;
    std::int64_t completed_ = 0;     // samples that packets have completed
    std::int64_t last_samples_ = 0;  // of the frame fed last
};

}  // namespace engine
