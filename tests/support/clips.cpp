#include "support/clips.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>

#include "engine/base/av/av_ptr.h"

namespace clips {
namespace {

using engine::AvPtr;

AvPtr<AVCodecContext> OpenDecoder(const AVStream& stream) {
    const AVCodec* decoder = avcodec_find_decoder(stream.codecpar->codec_id);
    if (decoder == nullptr) return nullptr;
    AvPtr<AVCodecContext> codec(avcodec_alloc_context3(decoder));
    avcodec_parameters_to_context(codec.get(), stream.codecpar);
    codec->pkt_timebase = stream.time_base;
    if (avcodec_open2(codec.get(), decoder, nullptr) < 0) return nullptr;
    return codec;
}

int MeanLuma(const AVFrame& frame) {
    std::int64_t sum = 0;
    for (int y = 0; y < frame.height; ++y)
        for (int x = 0; x < frame.width; ++x)
            sum += frame.data[0][static_cast<std::ptrdiff_t>(y) * frame.linesize[0] + x];
    return static_cast<int>(sum / frame.width / frame.height);
}

float Sample(const AVFrame& frame, int i) {
    const auto at = static_cast<std::size_t>(i);
    const auto interleaved = at * static_cast<std::size_t>(frame.ch_layout.nb_channels);
    switch (frame.format) {
        case AV_SAMPLE_FMT_FLTP:
            return reinterpret_cast<const float*>(frame.extended_data[0])[at];
        case AV_SAMPLE_FMT_FLT:
            return reinterpret_cast<const float*>(frame.data[0])[interleaved];
        case AV_SAMPLE_FMT_S16:
            return static_cast<float>(
                       reinterpret_cast<const std::int16_t*>(frame.data[0])[interleaved]) /
                   32768.0F;
        case AV_SAMPLE_FMT_S32:
            return static_cast<float>(
                reinterpret_cast<const std::int32_t*>(frame.data[0])[interleaved] / 2147483648.0);
        default:
            ADD_FAILURE() << "unexpected sample format " << frame.format;
            return 0;
    }
}

}  // namespace

std::string OutputOf(const std::string& command) {
    return test_support::RunCommand({"sh", "-c", command + " 2>&1"}).out;
}

Contents Decode(const std::string& file) {
    Contents contents;
    AVFormatContext* raw = nullptr;
    if (avformat_open_input(&raw, file.c_str(), nullptr, nullptr) < 0) {
        ADD_FAILURE() << "cannot open " << file;
        return contents;
    }
    const AvPtr<AVFormatContext> format(raw);
    avformat_find_stream_info(raw, nullptr);
    contents.duration = static_cast<double>(raw->duration) / AV_TIME_BASE;
    std::vector<AvPtr<AVCodecContext>> codecs;
    for (unsigned i = 0; i < raw->nb_streams; ++i) {
        codecs.push_back(OpenDecoder(*raw->streams[i]));
        const AVCodecParameters& parameters = *raw->streams[i]->codecpar;
        const bool video = parameters.codec_type == AVMEDIA_TYPE_VIDEO;
        (video ? contents.video_codec : contents.audio_codec) =
            avcodec_get_name(parameters.codec_id);
        if (video) {
            contents.width = parameters.width;
            contents.height = parameters.height;
        } else {
            contents.sampling_rate = parameters.sample_rate;
        }
    }
    const AvPtr<AVPacket> packet(av_packet_alloc());
    const AvPtr<AVFrame> frame(av_frame_alloc());
    double last_step = 0;  // between frames, seconds
    const auto drain = [&](std::size_t i, const AVPacket* input) {
        if (!codecs[i] || avcodec_send_packet(codecs[i].get(), input) < 0) return;
        while (avcodec_receive_frame(codecs[i].get(), frame.get()) >= 0) {
            if (codecs[i]->codec_type == AVMEDIA_TYPE_AUDIO) {
                for (int s = 0; s < frame->nb_samples; ++s)
                    contents.audio.push_back(Sample(*frame, s));
                continue;
            }
            const double unit = av_q2d(raw->streams[i]->time_base);
            double time = static_cast<double>(frame->best_effort_timestamp) * unit;
            // The last of frames that were reordered: no packet comes that brings it its time.
            if (frame->best_effort_timestamp == AV_NOPTS_VALUE)
                time = contents.frames.back().time + last_step;
            if (!contents.frames.empty()) last_step = time - contents.frames.back().time;
            contents.frames.push_back({time, MeanLuma(*frame)});
            if (frame->key_frame != 0) contents.key_times.push_back(time);
        }
    };
    while (av_read_frame(raw, packet.get()) >= 0) {
        drain(static_cast<std::size_t>(packet->stream_index), packet.get());
        av_packet_unref(packet.get());
    }
    for (std::size_t i = 0; i < codecs.size(); ++i) drain(i, nullptr);
    return contents;
}

double Psnr(const std::string& file, const std::string& reference, const std::string& filter,
            const std::string& pixels) {
    const std::string said = OutputOf(
        "ffmpeg -nostdin -i '" + file + "' -i '" + reference + "' -lavfi \"[0:v]settb=1/25," +
        "setpts=N,format=" + pixels + "[a];[1:v]" + filter +
        ",settb=1/25,setpts=N,format=" + pixels + "[b];[a][b]psnr=shortest=1\" -f null -");
    const std::size_t at = said.find("average:");
    if (at == std::string::npos) {
        ADD_FAILURE() << said;
        return 0;
    }
    const std::string figure = said.substr(at + 8);
    return figure.starts_with("inf") ? std::numeric_limits<double>::infinity()
                                     : std::strtod(figure.c_str(), nullptr);
}

std::vector<double> Flashes(const Contents& contents) {
    constexpr int kBright = 120;
    std::vector<double> times;
    bool bright = false;
    for (const SeenFrame& seen : contents.frames) {
        if (seen.luma > kBright && !bright) times.push_back(seen.time);
        bright = seen.luma > kBright;
    }
    return times;
}

std::vector<double> Clicks(const Contents& contents) {
    constexpr float kLoud = 0.25F;
    std::vector<double> times;
    for (std::size_t i = 0; i < contents.audio.size(); ++i) {
        if (std::fabs(contents.audio[i]) < kLoud) continue;
        times.push_back(static_cast<double>(i) / contents.sampling_rate);
        i += static_cast<std::size_t>(contents.sampling_rate / 2);  // over its echo
    }
    return times;
}

}  // namespace clips
