#include "engine/encoders/av_audio_encoder.h"

#include <fmt/format.h>

#include <utility>

#include "engine/base/av/av_error.h"
#include "engine/encoders/audio_header.h"

namespace engine {

AvAudioEncoder::AvAudioEncoder(const AudioPlan& plan, CodedFramePool& packets)
    : plan_(plan), packets_(packets) {
    const WrittenAudio written = WrittenFor(*plan.codec, plan.mode, plan.format);
    const std::string subject = fmt::format("Audio codec {}", plan.codec->name);
    const AVCodec* encoder = avcodec_find_encoder_by_name(std::string(written.maker.name).c_str());
    if (encoder == nullptr) throw AvError(AVERROR_ENCODER_NOT_FOUND, subject);
    codec_.reset(CheckAllocated(avcodec_alloc_context3(encoder)));
    codec_->sample_fmt = encoder->sample_fmts[0];
    codec_->sample_rate = written.format.sampling_rate;
    av_channel_layout_default(&codec_->ch_layout, written.format.channels);
    // Decoders derive the bitstream's parameters from the header's whole bytes per second.
    codec_->bit_rate = std::int64_t{written.format.value / 8} * 8;
    codec_->time_base = {1, codec_->sample_rate};
    CheckAv(
        avcodec_open2(codec_.get(), encoder, nullptr),
        fmt::format("{} at {} bits per second, {} Hz, {} channels", subject, written.format.value,
                    written.format.sampling_rate, written.format.channels));

    silence_.reset(CheckAllocated(av_frame_alloc()));
    silence_->nb_samples = codec_->frame_size;
    silence_->format = codec_->sample_fmt;
    silence_->sample_rate = codec_->sample_rate;
    CheckAv(av_channel_layout_copy(&silence_->ch_layout, &codec_->ch_layout), subject);
    CheckAv(av_frame_get_buffer(silence_.get(), 0), subject);
    av_samples_set_silence(silence_->extended_data, 0, silence_->nb_samples,
                           codec_->ch_layout.nb_channels, codec_->sample_fmt);
}

AudioFrameFormat AvAudioEncoder::Format() const {
    return {codec_->sample_fmt, codec_->sample_rate, codec_->ch_layout.nb_channels,
            codec_->frame_size};
}

StreamHeader AvAudioEncoder::Header() const {
    StreamHeader header = AudioStreamHeader(plan_);
    AudioHeader& audio = std::get<AudioHeader>(header.format);
    audio.block_align = static_cast<std::uint16_t>(codec_->block_align);
    audio.average_bytes_per_second = static_cast<std::uint32_t>(codec_->bit_rate / 8);
    header.extra_data.assign(codec_->extradata, codec_->extradata + codec_->extradata_size);
    return header;
}

bool AvAudioEncoder::Encode(AVFrame& frame, const CodedFrameSink& sink) {
    if (fed_frames_ == 0 && !EncodeSilence(0, sink)) return false;
    const std::int64_t samples = frame.nb_samples;
    if (samples < codec_->frame_size) {
        av_samples_set_silence(frame.extended_data, frame.nb_samples,
                               codec_->frame_size - frame.nb_samples, codec_->ch_layout.nb_channels,
                               codec_->sample_fmt);
        frame.nb_samples = codec_->frame_size;
    }
    const std::int64_t completed = std::exchange(last_samples_, samples);
    return Send(frame, completed, sink);
}

bool AvAudioEncoder::Finish(const CodedFrameSink& sink) {
    if (fed_frames_ == 0) return true;
    return EncodeSilence(std::exchange(last_samples_, 0), sink);
}

bool AvAudioEncoder::EncodeSilence(std::int64_t samples_completed, const CodedFrameSink& sink) {
    return Send(*silence_, samples_completed, sink);
}

bool AvAudioEncoder::Send(AVFrame& frame, std::int64_t samples_completed,
                          const CodedFrameSink& sink) {
    const std::string subject = "Encoding of the sound failed";
    frame.pts = fed_frames_++ * codec_->frame_size;
    CheckAv(avcodec_send_frame(codec_.get(), &frame), subject);
    for (;;) {
        PacketHandle packet = packets_.Get();
        const int result = avcodec_receive_packet(codec_.get(), packet.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return true;
        CheckAv(result, subject);
        CodedFrame coded;
        coded.pts = coded.dts = SampleTime(completed_, codec_->sample_rate);
        completed_ += samples_completed;
        coded.duration = SampleTime(completed_, codec_->sample_rate) - coded.pts;
        coded.key = true;
        coded.audio_samples = samples_completed;
        coded.bytes = packets_.Share(std::move(packet));
        if (!sink(std::move(coded))) return false;
    }
}

}  // namespace engine
