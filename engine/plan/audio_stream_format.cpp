#include "engine/plan/audio_stream_format.h"

#include "codecs/wma_lossless/stream_format.h"
#include "codecs/wma_standard/encoder.h"

namespace engine {

namespace {

using platform::CodecMaker;
using platform::VbrMode;

AudioStreamFormat Standard(const AudioFormat& format, VbrMode mode) {
    codecs::wma_standard::EncoderSettings settings;
    settings.sampling_rate = format.sampling_rate;
    settings.channels = format.channels;
    settings.bit_rate = format.value;
    // Variable rates have packets of one size.
    if (mode != VbrMode::Constant) settings.mode = codecs::wma_standard::RateMode::Quality;
    const codecs::wma_standard::StreamFormat stream = FormatFor(settings);
    const auto extra = stream.ExtraData();
    return {stream.packet_bytes, {extra.begin(), extra.end()}};
}

AudioStreamFormat Lossless(const AudioFormat& format) {
    const codecs::wma_lossless::StreamFormat stream(format.sampling_rate, format.channels,
                                                    format.bits_per_sample);
    return {stream.PacketBytes(), stream.ExtraData()};
}

}  // namespace

AudioStreamFormat StreamFormatOf(const WrittenAudio& written, VbrMode mode) {
    const AudioFormat& format = written.format;
    switch (written.maker.kind) {
        case CodecMaker::Kind::Pcm:
            return {format.channels * format.bits_per_sample / 8, {}};
        case CodecMaker::Kind::Wma:
            return Standard(format, mode);
        case CodecMaker::Kind::Lossless:
            return Lossless(format);
        // Named one by one, so that a maker of audio that is added is not forgotten here.
        case CodecMaker::Kind::Library:
        case CodecMaker::Kind::StandIn:
        case CodecMaker::Kind::FullFrames:
        case CodecMaker::Kind::Wmv9:
        case CodecMaker::Kind::Screen:
            break;
    }
    return {};
}

}  // namespace engine
