#include "engine/encoders/make_encoder.h"

#include <string_view>

#include "engine/encoders/av_audio_encoder.h"
#include "engine/encoders/av_video_encoder.h"
#include "engine/encoders/full_frame_encoder.h"
#include "engine/encoders/pcm_encoder.h"

namespace engine {

std::unique_ptr<VideoEncoder> MakeVideoEncoder(const VideoPlan& plan, const EncoderPass& pass,
                                               PacketPool& packets) {
    if (plan.codec->written_four_cc == 0) return std::make_unique<FullFrameEncoder>(plan, packets);
    return std::make_unique<AvVideoEncoder>(plan, pass, packets);
}

std::unique_ptr<AudioEncoder> MakeAudioEncoder(const AudioPlan& plan, PacketPool& packets) {
    const WrittenAudio written = WrittenFor(*plan.codec, plan.mode, plan.format);
    if (std::string_view(written.av_encoder).starts_with("pcm_"))
        return std::make_unique<PcmEncoder>(plan, packets);
    return std::make_unique<AvAudioEncoder>(plan, packets);
}

}  // namespace engine
