#include "clips.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "engine/base/av/av_ptr.h"
#include "engine/outputs/asf/asf_file.h"

namespace clips {

using engine::AvPtr;
using engine::Ticks;

Clip MadeUp(int milliseconds) {
    Clip clip;
    engine::StreamHeader audio;
    audio.format = engine::AudioHeader{.format_tag = 0x161,
                                       .channels = 2,
                                       .sampling_rate = 44100,
                                       .average_bytes_per_second = 8005,
                                       .block_align = 1487,
                                       .bits_per_sample = 16};
    audio.extra_data = {0, 0, 0, 0, 0x1F, 0, 0, 0, 0, 0};
    audio.codec_name = "Windows Media Audio 9";
    audio.codec_description = "64 kbps, 44 kHz, stereo CBR";
    audio.average_rate_bps = 64040;
    audio.buffer_ms = 2000;
    engine::StreamHeader video;
    video.format = engine::VideoHeader{.four_cc = 0x32564D57,  // "WMV2"
                                       .width = 321,
                                       .height = 239,
                                       .frame_rate_thousandths = 25000,
                                       .pixel_aspect_x = 12,
                                       .pixel_aspect_y = 11};
    video.extra_data = {1, 2, 3, 4};
    video.codec_name = "Windows Media Video 8";
    video.variable_rate = true;
    video.average_rate_bps = 300000;
    video.buffer_ms = 4000;
    video.peak_rate_bps = 600000;
    video.peak_buffer_ms = 5000;
    video.conformance = "MP@ML";
    clip.header.streams = {audio, video};

    std::mt19937 random(7);
    const auto bytes = [&](std::size_t count) {
        std::vector<std::uint8_t> filled(count);
        for (std::uint8_t& byte : filled) byte = static_cast<std::uint8_t>(random());
        return filled;
    };
    int audio_at = 0;
    for (int at = 0, i = 0; at < milliseconds; at += 40, ++i) {
        for (; audio_at <= at; audio_at += 186)
            clip.frames.push_back({0, Ticks::FromMilliseconds(audio_at),
                                   Ticks::FromMilliseconds(audio_at), Ticks::FromMilliseconds(186),
                                   false, bytes(1487)});
        const bool key = i % 50 == 0;
        clip.frames.push_back({1, Ticks::FromMilliseconds(at), Ticks::FromMilliseconds(at),
                               Ticks::FromMilliseconds(40), key,
                               bytes(key ? 12000 + random() % 4000 : 1 + random() % 2400)});
    }
    return clip;
}

namespace {

engine::StreamHeader HeaderOf(const AVStream& stream) {
    const AVCodecParameters& from = *stream.codecpar;
    engine::StreamHeader header;
    header.average_rate_bps = static_cast<std::uint32_t>(from.bit_rate);
    header.codec_name = avcodec_get_name(from.codec_id);
    if (from.extradata_size > 0)
        header.extra_data.assign(from.extradata, from.extradata + from.extradata_size);
    if (from.codec_type == AVMEDIA_TYPE_AUDIO) {
        header.format = engine::AudioHeader{
            .format_tag = static_cast<std::uint16_t>(from.codec_tag),
            .channels = static_cast<std::uint16_t>(from.ch_layout.nb_channels),
            .sampling_rate = static_cast<std::uint32_t>(from.sample_rate),
            .average_bytes_per_second = static_cast<std::uint32_t>(from.bit_rate / 8),
            .block_align = static_cast<std::uint16_t>(from.block_align),
            .bits_per_sample = static_cast<std::uint16_t>(
                from.bits_per_coded_sample > 0 ? from.bits_per_coded_sample : 16)};
    } else {
        const std::uint32_t mpeg4 = from.codec_id == AV_CODEC_ID_MPEG4 ? 0x34504D46 : 0;  // "FMP4"
        header.format = engine::VideoHeader{
            .four_cc = from.codec_tag != 0 ? from.codec_tag : mpeg4,
            .bits_per_pixel = static_cast<std::uint16_t>(
                from.bits_per_coded_sample > 0 ? from.bits_per_coded_sample : 24),
            .width = from.width,
            .height = from.height};
    }
    return header;
}

}  // namespace

Clip Demux(const std::string& path) {
    Clip clip;
    AVFormatContext* context = nullptr;
    if (avformat_open_input(&context, path.c_str(), nullptr, nullptr) < 0)
        throw std::runtime_error("cannot read " + path);
    const AvPtr<AVFormatContext> input(context);
    avformat_find_stream_info(context, nullptr);
    std::vector<int> ours(input->nb_streams, -1);
    for (const AVMediaType kind : {AVMEDIA_TYPE_AUDIO, AVMEDIA_TYPE_VIDEO})
        for (unsigned i = 0; i < input->nb_streams; ++i)
            if (input->streams[i]->codecpar->codec_type == kind) {
                ours[i] = static_cast<int>(clip.header.streams.size());
                clip.header.streams.push_back(HeaderOf(*input->streams[i]));
            }
    const AvPtr<AVPacket> packet(av_packet_alloc());
    std::int64_t first = INT64_MAX;
    while (av_read_frame(input.get(), packet.get()) >= 0) {
        const auto index = static_cast<std::size_t>(packet->stream_index);
        const AVRational base = input->streams[index]->time_base;
        const auto ticks = [&](std::int64_t time) {
            return Ticks{av_rescale_q(time, base, engine::kTicksBase)};
        };
        const std::int64_t dts = packet->dts != AV_NOPTS_VALUE ? packet->dts : packet->pts;
        const std::int64_t pts = packet->pts != AV_NOPTS_VALUE ? packet->pts : dts;
        clip.frames.push_back({ours[index],
                               ticks(pts),
                               ticks(dts),
                               ticks(packet->duration),
                               (packet->flags & AV_PKT_FLAG_KEY) != 0,
                               {packet->data, packet->data + packet->size}});
        first = std::min({first, clip.frames.back().pts.count, clip.frames.back().dts.count});
        av_packet_unref(packet.get());
    }
    for (Frame& frame : clip.frames) {
        frame.pts.count -= first;
        frame.dts.count -= first;
    }
    std::stable_sort(clip.frames.begin(), clip.frames.end(),
                     [](const Frame& a, const Frame& b) { return a.dts < b.dts; });
    return clip;
}

engine::CodedFrame Coded(const Frame& frame) {
    static class Owner final : public engine::CodedBytesOwner {
        void TakeBack() noexcept override {}
    } owner;
    return {frame.stream, frame.pts, frame.dts, frame.duration, frame.key, 0, {owner, frame.bytes}};
}

void WriteAll(engine::OutputSink& sink, const Clip& clip) {
    sink.Begin(clip.header);
    for (const Frame& frame : clip.frames) sink.Write(Coded(frame));
}

void WriteFile(const std::string& path, Clip clip, std::uint32_t packet_bytes) {
    clip.header.min_packet_bytes = clip.header.max_packet_bytes = packet_bytes;
    engine::asf::AsfFile file(path);
    WriteAll(file, clip);
    file.Finish();
}

std::vector<ReadBack> ReadWithLibavformat(const std::string& path, std::int64_t seek_ms,
                                          std::size_t limit) {
    std::vector<ReadBack> frames;
    av_log_set_level(AV_LOG_QUIET);
    AVFormatContext* context = nullptr;
    if (avformat_open_input(&context, path.c_str(), nullptr, nullptr) < 0) return frames;
    const AvPtr<AVFormatContext> input(context);
    if (seek_ms >= 0) {
        const int video = av_find_best_stream(context, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
        const std::int64_t start = std::max<std::int64_t>(context->streams[video]->start_time, 0);
        if (av_seek_frame(context, video, start + seek_ms, AVSEEK_FLAG_BACKWARD) < 0) return frames;
    }
    const AvPtr<AVPacket> packet(av_packet_alloc());
    while (frames.size() < limit && av_read_frame(context, packet.get()) >= 0) {
        const AVStream& stream = *context->streams[packet->stream_index];
        frames.push_back({packet->stream_index,
                          av_rescale_q(packet->pts, stream.time_base, {1, 1000}),
                          (packet->flags & AV_PKT_FLAG_KEY) != 0,
                          {packet->data, packet->data + packet->size}});
        av_packet_unref(packet.get());
    }
    return frames;
}

}  // namespace clips
