#include "engine/outputs/asf/packet_reader.h"

#include <array>

#include "engine/outputs/asf/byte_reader.h"

namespace engine::asf {
namespace {

constexpr std::uint8_t kErrorCorrectionPresent = 0x80;
constexpr std::uint8_t kErrorCorrectionUnknown = 0x70;  // opaque data or a length of another kind
constexpr std::uint8_t kErrorCorrectionBytes = 0x0F;
constexpr std::uint8_t kMultiplePayloads = 0x01;
constexpr std::uint8_t kKeyFrame = 0x80;
constexpr std::size_t kTimedReplication = 8;  // object size and pts

/// Bytes of a field whose two-bit type stands at `shift`.
std::size_t Width(unsigned flags, int shift) {
    constexpr std::array<std::size_t, 4> widths = {0, 1, 2, 4};
    return widths[(flags >> shift) & 3U];
}

class PacketReader {
  public:
    PacketReader(std::span<const std::uint8_t> bytes, const std::bitset<128>& streams,
                 PacketFacts& facts)
        : in_(bytes), packet_bytes_(bytes.size()), streams_(streams), facts_(facts) {}

    bool Read() {
        facts_.payloads.clear();
        std::uint8_t flags = in_.U8();
        if ((flags & kErrorCorrectionPresent) != 0) {
            if ((flags & kErrorCorrectionUnknown) != 0) return false;
            in_.Skip(flags & kErrorCorrectionBytes);
            flags = in_.U8();
            if ((flags & kErrorCorrectionPresent) != 0) return false;
        }
        property_flags_ = in_.U8();
        if (Width(property_flags_, 6) != 1) return false;  // of the stream number
        std::uint64_t length = in_.Number(Width(flags, 5));
        if (Width(flags, 5) == 0) length = packet_bytes_;
        in_.Number(Width(flags, 1));  // sequence
        const std::uint64_t padding = in_.Number(Width(flags, 3));
        facts_.send_ms = in_.U32();
        facts_.duration_ms = in_.U16();
        if (in_.Failed() || length > packet_bytes_ || padding >= length) return false;
        end_ = length - padding;

        if ((flags & kMultiplePayloads) == 0) return ReadPayload(true, 0) && in_.Place() == end_;
        constexpr unsigned count_bits = 0x3F;
        const std::uint8_t count_and_width = in_.U8();
        const unsigned count = count_and_width & count_bits;
        for (unsigned i = 0; i < count; ++i)
            if (!ReadPayload(false, Width(count_and_width, 6))) return false;
        return count > 0 && in_.Place() == end_;
    }

  private:
    bool ReadPayload(bool alone, std::size_t length_width) {
        PayloadFacts payload;
        const std::uint8_t stream = in_.U8();
        payload.stream = stream & 0x7FU;
        payload.key = (stream & kKeyFrame) != 0;
        payload.object = static_cast<std::uint32_t>(in_.Number(Width(property_flags_, 4)));
        payload.offset = static_cast<std::uint32_t>(in_.Number(Width(property_flags_, 2)));
        const std::uint64_t replicated = in_.Number(Width(property_flags_, 0));
        const bool compressed = replicated == 1;
        std::uint8_t time_step = 0;
        if (compressed) {
            time_step = in_.U8();
        } else if (replicated >= kTimedReplication) {
            payload.object_bytes = in_.U32();
            payload.pts_ms = in_.U32();
            in_.Skip(replicated - kTimedReplication);
        } else {
            in_.Skip(replicated);
        }
        const std::uint64_t length = alone ? end_ - in_.Place() : in_.Number(length_width);
        if (in_.Failed() || in_.Place() > end_ || length > end_ - in_.Place()) return false;
        if (!streams_[payload.stream]) return false;
        if (compressed) return ReadSubPayloads(payload, time_step, in_.Place() + length);
        payload.bytes = static_cast<std::uint32_t>(length);
        const bool inside = std::uint64_t{payload.offset} + length <= payload.object_bytes;
        if (length == 0 || (payload.object_bytes != 0 && !inside)) return false;
        in_.Skip(length);
        facts_.payloads.push_back(payload);
        return true;
    }

    // Whole small objects; the offset's field holds the first one's pts.
    bool ReadSubPayloads(PayloadFacts payload, std::uint8_t time_step, std::uint64_t end) {
        payload.pts_ms = payload.offset;
        payload.offset = 0;
        while (in_.Place() < end) {
            payload.bytes = payload.object_bytes = in_.U8();
            in_.Skip(payload.bytes);
            if (in_.Failed() || in_.Place() > end || payload.bytes == 0) return false;
            facts_.payloads.push_back(payload);
            ++payload.object;
            payload.pts_ms += time_step;
        }
        return true;
    }

    ByteReader in_;
    const std::size_t packet_bytes_;
    const std::bitset<128>& streams_;
    PacketFacts& facts_;
    std::uint8_t property_flags_ = 0;
    std::uint64_t end_ = 0;  // of the payloads
};

}  // namespace

bool ReadPacket(std::span<const std::uint8_t> bytes, const std::bitset<128>& streams,
                PacketFacts& facts) {
    return PacketReader(bytes, streams, facts).Read();
}

}  // namespace engine::asf
