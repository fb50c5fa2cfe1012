#include "engine/encoders/make_encoder.h"

#include <utility>

#include "engine/encoders/av_gop_coder.h"
#include "engine/encoders/full_frame_encoder.h"
#include "engine/encoders/gop_video_encoder.h"
#include "engine/encoders/lossless_audio_encoder.h"
#include "engine/encoders/pcm_encoder.h"
#include "engine/encoders/screen_video_encoder.h"
#include "engine/encoders/video_header.h"
#include "engine/encoders/video_rate.h"
#include "engine/encoders/wma_audio_encoder.h"
#include "engine/encoders/wmv9_gop_coder.h"

namespace engine {

using platform::CodecMaker;

std::unique_ptr<VideoEncoder> MakeVideoEncoder(const VideoPlan& plan, const EncoderPass& pass,
                                               CodedFramePool& packets) {
    const CodecMaker::Kind maker = plan.codec->maker.kind;
    if (maker == CodecMaker::Kind::FullFrames)
        return std::make_unique<FullFrameEncoder>(plan, packets);
    StreamHeader header = VideoStreamHeader(plan);
    codecs::RateSettings rate = VideoRate(plan, pass);
    if (maker == CodecMaker::Kind::Screen)
        return std::make_unique<ScreenVideoEncoder>(plan, rate, std::move(header), packets);
    const VideoFrameFormat format{AV_PIX_FMT_YUV420P, plan.width, plan.height};
    if (maker == CodecMaker::Kind::Wmv9) {
        const codecs::wmv9::EncoderSettings settings = Wmv9Settings(plan);
        header.extra_data = Wmv9GopCoder(settings, packets).ExtraData();
        header.reordered = settings.b_pictures > 0;
        const int lookahead = plan.input.capture ? 0 : LookaheadPictures(settings);
        rate.weighs_i = lookahead > 0;
        return std::make_unique<GopVideoEncoder>(
            plan, rate, pass, format, std::move(header),
            [settings, &packets](double /*vbv_room_bits*/) {
                return std::make_unique<Wmv9GopCoder>(settings, packets);
            },
            settings.b_pictures, lookahead);
    }
    // Also finds out whether the encoder takes the plan.
    header.extra_data = AvGopCoder(plan, rate, rate.vbv_bits, packets).ExtraData();
    return std::make_unique<GopVideoEncoder>(
        plan, rate, pass, format, std::move(header), [plan, rate, &packets](double vbv_room_bits) {
            return std::make_unique<AvGopCoder>(plan, rate, vbv_room_bits, packets);
        });
}

std::unique_ptr<AudioEncoder> MakeAudioEncoder(const AudioPlan& plan, const EncoderPass& pass,
                                               CodedFramePool& packets) {
    const WrittenAudio written = WrittenFor(*plan.codec, plan.mode, plan.format);
    if (written.maker.kind == CodecMaker::Kind::Pcm)
        return std::make_unique<PcmEncoder>(plan, packets);
    if (written.maker.kind == CodecMaker::Kind::Lossless)
        return std::make_unique<LosslessAudioEncoder>(plan, packets);
    if (written.maker.kind == CodecMaker::Kind::Professional)
        return std::make_unique<WmaAudioEncoder<codecs::wma_pro::Encoder>>(plan, pass, packets);
    if (written.maker.kind == CodecMaker::Kind::Voice)
        return std::make_unique<WmaAudioEncoder<codecs::wma_voice::Encoder>>(plan, pass, packets);
    return std::make_unique<WmaAudioEncoder<codecs::wma_standard::Encoder>>(plan, pass, packets);
}

}  // namespace engine
