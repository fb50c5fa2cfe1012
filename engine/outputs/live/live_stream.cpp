#include "engine/outputs/live/live_stream.h"

#include <algorithm>
#include <utility>

namespace engine {
namespace {

// Neither is known of a stream without an end.
constexpr std::uint64_t kUnknownPackets = 0xFFFFFFFF;

// Of the time between a frame and who sees it.
constexpr Ticks kLongestOpen = Ticks::FromMilliseconds(200);

OutputHeader WithLivePackets(OutputHeader header) {
    if (header.max_packet_bytes != 0)
        header.max_packet_bytes = std::min(header.max_packet_bytes, kMostLivePacketBytes);
    return header;
}

// By which a packet is known that can be joined at: 0 = any stream's.
std::uint8_t VideoStream(const OutputHeader& header) {
    for (std::size_t i = 0; i < header.streams.size(); ++i)
        if (header.streams[i].Kind() == MediaKind::Video) return asf::StreamNumber(i);
    return 0;
}

}  // namespace

LiveStream::LiveStream(OutputHeader header, Receiver receiver) {
    const std::uint8_t video = VideoStream(header);
    packetizer_ = std::make_unique<asf::FramePacketizer>(
        WithLivePackets(std::move(header)),
        [this, video, receiver = std::move(receiver)](const asf::ClosedPacket& closed) {
            auto packet = std::make_shared<LivePacket>();
            packet->bytes.assign(closed.bytes.begin(), closed.bytes.end());
            packet->unpadded = asf::WithoutPadding(closed.bytes);
            packet->number = closed.number;
            packet->send_ms = closed.send_ms;
            packet->frames = closed.frames;
            packet->join_point =
                closed.key_stream != 0 && (video == 0 || closed.key_stream == video);
            sent_ = true;
            receiver(std::move(packet));
        });
    header_ = packetizer_->Header({.packets = kUnknownPackets,
                                   .play_duration = {},
                                   .send_duration = {},
                                   .largest_objects = {},
                                   .measured_rates = {}});
}

void LiveStream::Write(const CodedFrame& frame) {
    sent_ = false;
    packetizer_->Add(frame);
    if (!sent_ && frame.dts - sent_at_ >= kLongestOpen) Flush();
    if (sent_) sent_at_ = frame.dts;
}

}  // namespace engine
