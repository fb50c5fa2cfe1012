// Audio as it is: 8, 16 or 24 bits a sample, channels interleaved.
#pragma once

#include "engine/base/av/coded_frame_pool.h"
#include "engine/base/av/encoder.h"
#include "engine/plan/encode_plan.h"

namespace engine {

class PcmEncoder final : public AudioEncoder {
  public:
    PcmEncoder(const AudioPlan& plan, CodedFramePool& packets);

    AudioFrameFormat Format() const override;
    StreamHeader Header() const override;
    bool Encode(AVFrame& frame, const CodedFrameSink& sink) override;
    bool Finish(const CodedFrameSink&) override { return true; }

  private:
    AudioPlan plan_;
    AudioFormat format_;
    CodedFramePool& packets_;
    std::size_t block_bytes_;
    AvPtr<AVBufferPool> buffers_;
};

}  // namespace engine
