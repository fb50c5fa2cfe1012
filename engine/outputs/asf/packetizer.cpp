#include "engine/outputs/asf/packetizer.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <utility>

#include "engine/outputs/asf/packet_size.h"
#include "platform/error.h"

namespace engine::asf {
namespace {

constexpr int kMaxPayloads = 63;
constexpr std::size_t kLeastUsefulRoom = 20;
constexpr std::size_t kLongestHeader = kPacketOverheadBytes + 2;  // with a word of padding length
constexpr Ticks kLongestSpan = {Ticks::kPerSecond};

constexpr std::uint8_t kErrorCorrectionFlags = 0x82;  // two bytes of it follow
constexpr std::uint8_t kMultiplePayloads = 0x01;
constexpr std::uint8_t kPaddingIsByte = 0x08;
constexpr std::uint8_t kPaddingIsWord = 0x10;
constexpr std::uint8_t kPropertyFlags = 0x5D;  // bytes, but the offset is 32 bits
constexpr std::uint8_t kPayloadLengthIsWord = 0x80;
constexpr std::uint8_t kKeyFrame = 0x80;

}  // namespace

Packetizer::Packetizer(std::uint32_t packet_bytes, std::uint32_t preroll_ms, Receiver receiver)
    : packet_bytes_(packet_bytes), preroll_ms_(preroll_ms), receiver_(std::move(receiver)) {
    assert(packet_bytes >= kMinPacketBytes && packet_bytes <= kMaxPacketBytes && preroll_ms > 0);
    header_.Reserve(kLongestHeader);
    packet_.Reserve(packet_bytes + kLongestHeader);
    packet_.Zeros(kLongestHeader);
}

std::size_t Packetizer::Room() const {
    return packet_bytes_ - kPacketOverheadBytes - (packet_.size() - kLongestHeader);
}

std::int64_t Packetizer::PtsField(const MediaObject& object) const {
    const Ticks time = object.pts - object.ahead;
    return (time.count + Ticks::kPerMillisecond / 2) / Ticks::kPerMillisecond + preroll_ms_;
}

void Packetizer::Add(const MediaObject& object) {
    assert(object.stream_number < object_numbers_.size());
    assert(object.pts.count >= 0 && object.dts.count >= 0);
    if (object.bytes.empty()) return;
    if (object.bytes.size() > std::numeric_limits<std::uint32_t>::max())
        throw platform::Error(platform::kInvalidArgument,
                              "A coded frame of 4 GiB or more does not fit the file format; use a "
                              "smaller picture or a codec that compresses");
    if (PtsField(object) > std::numeric_limits<std::uint32_t>::max())
        throw platform::Error(platform::kInvalidArgument,
                              "A Windows Media file is at most 49 days long, and ends here; encode "
                              "the rest into another, with -time");

    const std::size_t whole = kPayloadOverheadBytes + object.bytes.size();
    const bool fits_empty_packet = whole <= packet_bytes_ - kPacketOverheadBytes;
    const bool wants_new_packet = object.video ? object.key : fits_empty_packet && whole > Room();
    if (wants_new_packet) Flush();

    first_packet_of_object_ = state_.number;
    for (std::size_t offset = 0; offset < object.bytes.size();) {
        const std::size_t count =
            std::min(Room() - kPayloadOverheadBytes, object.bytes.size() - offset);
        AppendPayload(object, static_cast<std::uint32_t>(offset), count);
        offset += count;
        if (offset == object.bytes.size()) {
            ++object_numbers_[object.stream_number];
            const Ticks end = object.pts + object.duration;
            state_.media_end = std::max(state_.media_end, end);
            media_ms_ = (object.dts + object.duration).Milliseconds();
            if (object.video && object.key)
                state_.key_frame = KeyFrameSpan{
                    object.stream_number, PtsField(object), first_packet_of_object_,
                    static_cast<std::uint32_t>(state_.number - first_packet_of_object_ + 1)};
        }
        if (Room() < kLeastUsefulRoom || payloads_ == kMaxPayloads) Close();
    }
    // Data that waited for more than a second would be lost when the process is killed.
    if (payloads_ > 0 && object.dts + object.duration - first_dts_ >= kLongestSpan) Close();
}

void Packetizer::Flush() {
    if (payloads_ > 0) Close();
}

void Packetizer::AppendPayload(const MediaObject& object, std::uint32_t offset, std::size_t count) {
    const std::int64_t pts_ms = PtsField(object);
    if (payloads_ == 0) {
        first_dts_ = std::min(object.dts, object.pts);
        state_.send_ms = std::max(state_.send_ms, first_dts_.Milliseconds());
        media_ms_ = state_.send_ms;
    }
    state_.last_pts_ms = std::max(state_.last_pts_ms, pts_ms);
    const bool key = object.key || !object.video;
    if (offset == 0) {
        if (key && payloads_ == 0) state_.key_stream = object.stream_number;
        ++state_.frames;
    }
    packet_.U8(static_cast<std::uint8_t>(object.stream_number | (key ? kKeyFrame : 0)));
    packet_.U8(object_numbers_[object.stream_number]);
    packet_.U32(offset);
    packet_.U8(8);
    packet_.U32(static_cast<std::uint32_t>(object.bytes.size()));
    packet_.U32(static_cast<std::uint32_t>(pts_ms));
    packet_.U16(static_cast<std::uint16_t>(count));
    packet_.Bytes(object.bytes.subspan(offset, count));
    ++payloads_;
}

void Packetizer::Close() {
    // The padding's length stands before the payloads but is known only now: the header is written
    // backwards from the first payload, and the packet begins wherever that leads.
    const std::size_t rest = Room();
    const std::size_t length_bytes = rest == 0 ? 0 : rest <= 256 ? 1 : 2;
    const std::uint8_t padding_kind = length_bytes == 0   ? 0
                                      : length_bytes == 1 ? kPaddingIsByte
                                                          : kPaddingIsWord;
    state_.duration_ms =
        static_cast<std::uint16_t>(std::clamp<std::int64_t>(media_ms_ - state_.send_ms, 0, 0xFFFF));

    header_.Clear();
    header_.U8(kErrorCorrectionFlags);
    header_.U16(0);
    header_.U8(kMultiplePayloads | padding_kind);
    header_.U8(kPropertyFlags);
    if (length_bytes == 1) header_.U8(static_cast<std::uint8_t>(rest - 1));
    if (length_bytes == 2) header_.U16(static_cast<std::uint16_t>(rest - 2));
    header_.U32(static_cast<std::uint32_t>(state_.send_ms));
    header_.U16(state_.duration_ms);
    header_.U8(static_cast<std::uint8_t>(kPayloadLengthIsWord | payloads_));

    const std::size_t begin = kLongestHeader - header_.size();
    packet_.Zeros(rest - length_bytes);
    std::copy(header_.bytes().begin(), header_.bytes().end(),
              packet_.bytes().begin() + static_cast<std::ptrdiff_t>(begin));
    state_.bytes = packet_.bytes().subspan(begin, packet_bytes_);
    receiver_(state_);

    packet_.Clear();
    packet_.Zeros(kLongestHeader);
    payloads_ = 0;
    state_.key_frame.reset();
    state_.key_stream = 0;
    state_.frames = 0;
    ++state_.number;
}

}  // namespace engine::asf
