#include "engine/outputs/asf/frame_packetizer.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "engine/outputs/asf/packet_size.h"

namespace engine::asf {
namespace {

constexpr std::uint32_t kSparsePacketBytes = 4000;

// Audio blocks are not split over packets. Those of lossless audio are so large that what they
// leave at the end of a packet would be a quarter of the file.
std::uint32_t WithWholeBlocks(std::uint32_t packet_bytes, const OutputHeader& header) {
    if (header.streams.size() != 1 || !header.streams.front().rate_is_estimate) return packet_bytes;
    const auto* const audio = std::get_if<AudioHeader>(&header.streams.front().format);
    if (audio == nullptr || audio->block_align == 0) return packet_bytes;
    const std::uint32_t block = audio->block_align + kPayloadOverheadBytes;
    const std::uint32_t blocks = (packet_bytes - kPacketOverheadBytes) / block;
    const std::uint32_t whole = kPacketOverheadBytes + blocks * block;
    return blocks == 0 || whole < header.min_packet_bytes ? packet_bytes : whole;
}

// What waits is written at least each second, in a packet of its own however little it is.
std::uint32_t PacketBytes(const OutputHeader& header) {
    std::uint64_t total_bps = 0;
    for (const StreamHeader& stream : header.streams) total_bps += stream.average_rate_bps;
    std::uint32_t bytes =
        ChoosePacketSize(total_bps, header.min_packet_bytes, header.max_packet_bytes);
    if (header.max_packet_bytes == 0 && std::ranges::any_of(header.streams, &StreamHeader::sparse))
        bytes = std::min(bytes, std::max(kSparsePacketBytes, header.min_packet_bytes));
    return WithWholeBlocks(bytes, header);
}

}  // namespace

FramePacketizer::FramePacketizer(OutputHeader header, Packetizer::Receiver receiver)
    : header_(std::move(header)), kept_back_(header_.streams.size()) {
    facts_.packet_bytes = PacketBytes(header_);
    facts_.preroll_ms = PrerollMs(header_);
    facts_.file_id = RandomFileId();
    facts_.creation_date = CreationDateNow();
    packetizer_.emplace(facts_.packet_bytes, facts_.preroll_ms, std::move(receiver));
}

std::vector<std::uint8_t> FramePacketizer::Header(const HeaderNumbers& numbers) const {
    return BuildHeader(header_, facts_, numbers);
}

void FramePacketizer::Add(const CodedFrame& frame) {
    const auto index = static_cast<std::size_t>(frame.stream);
    assert(index < kept_back_.size());
    const StreamHeader& stream = header_.streams[index];
    packetizer_->Add({.stream_number = StreamNumber(index),
                      .video = stream.Kind() == MediaKind::Video,
                      .key = frame.key,
                      .pts = frame.pts,
                      .dts = frame.dts,
                      .duration = frame.duration,
                      .bytes = frame.bytes,
                      .ahead = stream.reordered ? Ahead(index, frame.pts) : Ticks{}});
}

Ticks FramePacketizer::Ahead(std::size_t stream, Ticks pts) {
    const Ticks kept_back = kept_back_[stream].value_or(pts);
    if (pts < kept_back) return {};  // shown at once
    kept_back_[stream] = pts;
    return pts - kept_back;
}

}  // namespace engine::asf
