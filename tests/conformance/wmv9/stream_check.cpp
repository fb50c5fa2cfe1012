#include "conformance/wmv9/stream_check.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "codecs/common/index.h"
#include "engine/base/av/av_ptr.h"
#include "support/library_messages.h"

namespace wmv9_conformance {

using codecs::Index;
using codecs::wmv9::PictureView;
using test_support::LibraryMessages;

namespace {

// The first macroblock that differs; empty where none does.
std::string Difference(const PlanarPicture& expected, const AVFrame& decoded) {
    constexpr const char* kPlanes[] = {"luma", "blue difference", "red difference"};
    constexpr int kNone = 1 << 30;
    int first = kNone;
    std::string text;
    for (int plane = 0; plane < 3; ++plane) {
        const int shift = plane == 0 ? 4 : 3;
        const int width = plane == 0 ? expected.width : expected.width / 2;
        const int height = plane == 0 ? expected.height : expected.height / 2;
        const std::uint8_t* want = expected.planes[Index(plane)].data();
        const std::uint8_t* got = decoded.data[plane];
        for (int y = 0; y < height; ++y, want += width, got += decoded.linesize[plane]) {
            if (std::memcmp(want, got, Index(width)) == 0) continue;
            for (int x = 0; x < width; ++x) {
                const int place = (y >> shift) * 8192 + (x >> shift);
                if (want[x] == got[x] || place >= first) continue;
                first = place;
                text = fmt::format("macroblock {},{}: {} at {},{} is {}, the encoder says {}",
                                   x >> shift, y >> shift, kPlanes[plane], x, y, got[x], want[x]);
            }
        }
    }
    return text;
}

}  // namespace

struct StreamCheck::Decoder {
    engine::AvPtr<AVCodecContext> codec;
    engine::AvPtr<AVPacket> packet;
    engine::AvPtr<AVFrame> frame;
};

StreamCheck::StreamCheck(const StreamFormat& format) : decoder_(std::make_unique<Decoder>()) {
    test_support::CollectLibraryMessages();
    const AVCodec* const codec = avcodec_find_decoder(AV_CODEC_ID_WMV3);
    decoder_->codec.reset(avcodec_alloc_context3(codec));
    decoder_->packet.reset(av_packet_alloc());
    decoder_->frame.reset(av_frame_alloc());
    AVCodecContext& context = *decoder_->codec;
    context.width = format.width;
    context.height = format.height;
    context.flags |= AV_CODEC_FLAG_BITEXACT;
    context.err_recognition = AV_EF_CRCCHECK | AV_EF_BITSTREAM | AV_EF_BUFFER | AV_EF_EXPLODE;
    context.thread_count = 1;
    context.extradata_size = static_cast<int>(format.sequence_header.size());
    context.extradata = static_cast<std::uint8_t*>(
        av_mallocz(format.sequence_header.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    std::copy(format.sequence_header.begin(), format.sequence_header.end(), context.extradata);
    if (avcodec_open2(&context, codec, nullptr) < 0) Fault("the decoder refuses the stream");
}

StreamCheck::~StreamCheck() = default;

void StreamCheck::Take(std::span<const std::uint8_t> data, const PictureView& shown, int place,
                       std::string name) {
    if (!fault_.empty()) return;
    const AVCodecContext& context = *decoder_->codec;
    const std::int64_t number = taken_++;
    waiting_[number] = {CopyOf(shown, context.width, context.height), place, std::move(name)};
    Send(data, number);
    if (!LibraryMessages().empty())
        Fault(waiting_[number].name + ": the decoder says " + LibraryMessages());
    Receive();
}

std::string StreamCheck::Finish() {
    if (fault_.empty()) {
        avcodec_send_packet(decoder_->codec.get(), nullptr);
        Receive();
    }
    if (!waiting_.empty()) Fault(waiting_.begin()->second.name + ": is not shown");
    return fault_;
}

void StreamCheck::Send(std::span<const std::uint8_t> data, std::int64_t number) {
    AVPacket& packet = *decoder_->packet;
    av_new_packet(&packet, static_cast<int>(data.size()));
    std::copy(data.begin(), data.end(), packet.data);
    packet.pts = number;
    if (avcodec_send_packet(decoder_->codec.get(), &packet) < 0)
        Fault(waiting_[number].name + ": is refused. " + LibraryMessages());
    av_packet_unref(&packet);
}

void StreamCheck::Receive() {
    int result = 0;
    while ((result = avcodec_receive_frame(decoder_->codec.get(), decoder_->frame.get())) == 0)
        Compare(*decoder_->frame);
    if (result != AVERROR(EAGAIN) && result != AVERROR_EOF) Fault("the decoder gives up");
    if (!LibraryMessages().empty()) Fault("the decoder says " + LibraryMessages());
}

void StreamCheck::Compare(const AVFrame& frame) {
    const auto found = waiting_.find(frame.pts);
    if (found == waiting_.end()) return Fault(fmt::format("picture {} comes twice", frame.pts));
    const Expected& expected = found->second;
    if (expected.place <= last_place_) Fault(expected.name + ": is shown too late");
    last_place_ = expected.place;
    const std::string difference = Difference(expected.picture, frame);
    if (!difference.empty()) Fault(expected.name + ": " + difference);
    waiting_.erase(found);
}

void StreamCheck::Fault(const std::string& fault) {
    if (fault_.empty()) fault_ = fault;
}

}  // namespace wmv9_conformance
