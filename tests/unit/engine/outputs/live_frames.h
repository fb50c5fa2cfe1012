// What live outputs are given in tests: streams and coded frames without content.
#pragma once

#include <algorithm>
#include <utility>

#include "engine/base/av/coded_frame_pool.h"
#include "engine/base/stream_header.h"

namespace live_frames {

inline engine::OutputHeader Header(bool with_video = true) {
    engine::OutputHeader header;
    engine::AudioHeader audio;
    audio.format_tag = 0x161;
    audio.channels = 2;
    audio.sampling_rate = 44100;
    audio.average_bytes_per_second = 8000;
    audio.block_align = 2000;
    audio.bits_per_sample = 16;
    header.streams.emplace_back();
    header.streams.back().format = audio;
    header.streams.back().average_rate_bps = 64'000;
    if (!with_video) return header;
    engine::VideoHeader video;
    video.four_cc = platform::FourCC("WMV3");
    video.width = 320;
    video.height = 240;
    header.streams.emplace_back();
    header.streams.back().format = video;
    header.streams.back().average_rate_bps = 300'000;
    return header;
}

/// The frames' bytes live as long as this.
class Frames {
  public:
    engine::CodedFrame Make(int stream, std::int64_t ms, bool key, int bytes) {
        engine::PacketHandle packet = pool_.Get();
        EXPECT_EQ(av_new_packet(packet.get(), bytes), 0);
        std::fill_n(packet->data, bytes, std::uint8_t{0xAB});
        engine::CodedFrame frame;
        frame.stream = stream;
        frame.pts = frame.dts = engine::Ticks::FromMilliseconds(ms);
        frame.duration = engine::Ticks::FromMilliseconds(40);
        frame.key = key;
        frame.bytes = pool_.Share(std::move(packet));
        return frame;
    }

  private:
    engine::CodedFramePool pool_;
};

}  // namespace live_frames
