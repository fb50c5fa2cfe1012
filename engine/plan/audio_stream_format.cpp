#include "engine/plan/audio_stream_format.h"

#include "codecs/wma_lossless/stream_format.h"
#include "codecs/wma_pro/encoder.h"
#include "codecs/wma_standard/encoder.h"
#include "codecs/wma_voice/stream_format.h"

namespace engine {

using codecs::wma::RateMode;

namespace {

using platform::CodecMaker;
using platform::VbrMode;

AudioStreamFormat Standard(const AudioFormat& format, VbrMode mode) {
    codecs::wma_standard::EncoderSettings settings;
    settings.sampling_rate = format.sampling_rate;
    settings.channels = format.channels;
    settings.bit_rate = format.value;
    settings.mode = RateModeOf(mode);
    const codecs::wma_standard::StreamFormat stream = FormatFor(settings);
    const auto extra = stream.ExtraData();
    return {stream.packet_bytes, {extra.begin(), extra.end()}};
}

AudioStreamFormat Professional(const AudioFormat& format, VbrMode mode) {
    codecs::wma_pro::EncoderSettings settings;
    settings.sampling_rate = format.sampling_rate;
    settings.channels = format.channels;
    settings.bits_per_sample = format.bits_per_sample;
    settings.bit_rate = format.value;
    settings.mode = RateModeOf(mode);
    const codecs::wma_pro::StreamFormat stream = FormatFor(settings);
    const auto extra = stream.ExtraData();
    return {stream.packet_bytes, {extra.begin(), extra.end()}};
}

AudioStreamFormat Lossless(const AudioFormat& format) {
    const codecs::wma_lossless::StreamFormat stream(format.sampling_rate, format.channels,
                                                    format.bits_per_sample);
    return {stream.PacketBytes(), stream.ExtraData()};
}

AudioStreamFormat Voice(const AudioFormat& format) {
    const codecs::wma_voice::StreamFormat stream(format.sampling_rate, format.value, false);
    const auto extra = stream.ExtraData();
    return {stream.PacketBytes(), {extra.begin(), extra.end()}};
}

}  // namespace

RateMode RateModeOf(VbrMode mode) {
    switch (mode) {
        case VbrMode::Quality:
            return RateMode::Quality;
        case VbrMode::BitRate:
            return RateMode::BitRate;
        case VbrMode::Peak:
            return RateMode::Peak;
        case VbrMode::Constant:
            break;
    }
    return RateMode::Constant;
}

AudioStreamFormat StreamFormatOf(const WrittenAudio& written, VbrMode mode) {
    const AudioFormat& format = written.format;
    switch (written.maker.kind) {
        case CodecMaker::Kind::Pcm:
            return {format.channels * format.bits_per_sample / 8, {}};
        case CodecMaker::Kind::Wma:
            return Standard(format, mode);
        case CodecMaker::Kind::Professional:
            return Professional(format, mode);
        case CodecMaker::Kind::Lossless:
            return Lossless(format);
        case CodecMaker::Kind::Voice:
            return Voice(format);
        // Named one by one, so that a maker of audio that is added is not forgotten here.
        case CodecMaker::Kind::Library:
        case CodecMaker::Kind::FullFrames:
        case CodecMaker::Kind::Wmv9:
        case CodecMaker::Kind::Screen:
            break;
    }
    return {};
}

}  // namespace engine
