// Audio through our own encoder of Windows Media Audio 9 Lossless.
#pragma once

#include <optional>
#include <vector>

#include "codecs/wma_lossless/encoder.h"
#include "engine/base/av/coded_frame_pool.h"
#include "engine/base/av/encoder.h"
#include "engine/plan/encode_plan.h"

namespace engine {

/// Packets do not heed frames: each has the time of the first frame that ends in it, which is the
/// first that a decoder gives out when it has the packet.
class LosslessAudioEncoder final : public AudioEncoder {
  public:
    LosslessAudioEncoder(const AudioPlan& plan, CodedFramePool& packets);

    AudioFrameFormat Format() const override;
    StreamHeader Header() const override;
    bool Encode(AVFrame& frame, const CodedFrameSink& sink) override;
    bool Finish(const CodedFrameSink& sink) override;

  private:
    void Send(const codecs::wma_lossless::Packet& packet, const CodedFrameSink& sink);

    AudioPlan plan_;
    codecs::wma_lossless::StreamFormat format_;
    CodedFramePool& packets_;
    codecs::wma_lossless::Encoder encoder_;
    std::vector<std::int32_t> samples_;
    std::optional<Ticks> last_time_;
    bool wanted_ = true;  // the consumer wants more
};

}  // namespace engine
