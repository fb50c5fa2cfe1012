// Windows Media Audio by our own encoders.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "codecs/wma/packetiser.h"
#include "codecs/wma_pro/encoder.h"
#include "codecs/wma_standard/encoder.h"
#include "codecs/wma_voice/encoder.h"
#include "engine/base/av/coded_frame_pool.h"
#include "engine/base/av/encoder.h"
#include "engine/encoders/make_encoder.h"
#include "engine/plan/encode_plan.h"

namespace engine {

/// Of the standard, the professional or the voice codec.
template <typename Encoder>
class WmaAudioEncoder final : public AudioEncoder {
  public:
    WmaAudioEncoder(const AudioPlan& plan, const EncoderPass& pass, CodedFramePool& packets);

    AudioFrameFormat Format() const override;
    StreamHeader Header() const override;
    bool Encode(AVFrame& frame, const CodedFrameSink& sink) override;
    bool Finish(const CodedFrameSink& sink) override;
    std::vector<float> TakeFirstPass() override;
    std::string NoteText() const override;

  private:
    codecs::wma::PacketSink Into(const CodedFrameSink& sink);

    AudioPlan plan_;
    AudioFormat format_;
    CodedFramePool& packets_;
    Encoder encoder_;
    AvPtr<AVBufferPool> buffers_;
    std::vector<std::span<const float>> channels_;
    Ticks next_time_;  // at the least
    bool wanted_ = true;
};

extern template class WmaAudioEncoder<codecs::wma_standard::Encoder>;
extern template class WmaAudioEncoder<codecs::wma_pro::Encoder>;
extern template class WmaAudioEncoder<codecs::wma_voice::Encoder>;

}  // namespace engine
