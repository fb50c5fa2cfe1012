#include "engine/outputs/asf/header_reader.h"

#include <utility>

#include "engine/outputs/asf/byte_reader.h"
#include "engine/outputs/asf/guids.h"
#include "engine/outputs/asf/stream_format.h"
#include "platform/error.h"

namespace engine::asf {
namespace {

constexpr std::size_t kHeaderChildren = 30;     // where they begin
constexpr std::size_t kExtensionChildren = 22;  // where they begin in the extension's body
constexpr std::size_t kExtendedStreamFixed = 64;
constexpr std::uint64_t kMostPrerollMs = 3'600'000;
constexpr std::uint32_t kMostPacketBytes = 16U << 20;

[[noreturn]] void Refuse(const char* reason) {
    throw platform::Error(platform::kInvalidData, reason);
}

class HeaderReader {
  public:
    explicit HeaderReader(HeaderView& view) : view_(view) {}

    void Read() {
        const std::size_t end = view_.DataObject();
        ReadChildren(kHeaderChildren, end);
        if (view_.properties == 0) Refuse("its header has no file properties");
        if (view_.streams.none()) Refuse("its header names no stream");
        ReadProperties();
        ByteReader data(Part(end, view_.bytes.size()));
        if (data.Id() != guid::kData) Refuse("no media data follow its header");
        view_.data_size = data.U64();
        data.Id();
        view_.data_packets = data.U64();
    }

  private:
    std::span<const std::uint8_t> Part(std::size_t begin, std::size_t end) const {
        return std::span(view_.bytes).subspan(begin, end - begin);
    }

    void ReadChildren(std::size_t begin, std::size_t end) {
        while (begin < end) {
            ByteReader in(Part(begin, end));
            const Guid id = in.Id();
            const std::uint64_t size = in.U64();
            if (in.Failed() || size < kObjectHeaderBytes || size > end - begin)
                Refuse("the objects of its header do not fit into it");
            const std::size_t child_end = begin + static_cast<std::size_t>(size);
            ReadChild(id, begin + kObjectHeaderBytes, child_end);
            begin = child_end;
        }
    }

    void ReadChild(const Guid& id, std::size_t body, std::size_t end) {
        if (id == guid::kFileProperties && end - body >= PropertiesPlace::kEnd) {
            view_.properties = body;
        } else if (id == guid::kStreamProperties) {
            ReadStream(body, end);
        } else if (id == guid::kHeaderExtension && end - body >= kExtensionChildren) {
            ReadChildren(body + kExtensionChildren, end);
        } else if (id == guid::kExtendedStream) {
            ReadExtendedStream(body, end);
        } else if (id == guid::kMetadata) {
            if (const char* fault = FaultOfMetadata(Part(body, end))) Refuse(fault);
        }
    }

    void ReadStream(std::size_t body, std::size_t end) {
        if (const char* fault = FaultOfStream(Part(body, end))) Refuse(fault);
        ByteReader in(Part(body, end));
        const Guid type = in.Id();
        in.Skip(32);  // error correction's kind, time offset, lengths
        const std::uint8_t number = in.U16() & 0x7FU;
        if (number == 0) Refuse("its header describes a stream without a number");
        if (view_.streams[number]) Refuse("its header describes a stream twice");
        view_.streams.set(number);
        view_.videos.set(number, type == guid::kVideoStream);
    }

    // A stream of a file with many may be described here only: behind names and extensions.
    void ReadExtendedStream(std::size_t body, std::size_t end) {
        ByteReader in(Part(body, end));
        in.Skip(kExtendedStreamFixed - 4);
        const std::uint16_t names = in.U16();
        const std::uint16_t extensions = in.U16();
        for (unsigned i = 0; i < names; ++i) {
            in.Skip(2);  // language
            in.Skip(in.U16());
        }
        for (unsigned i = 0; i < extensions; ++i) {
            in.Skip(18);  // kind, size
            in.Skip(in.U32());
        }
        if (in.Failed()) Refuse("its header's description of a stream is cut");
        ReadChildren(body + in.Place(), end);
    }

    void ReadProperties() {
        using Place = PropertiesPlace;
        ByteReader in(Part(view_.properties, view_.properties + Place::kEnd));
        view_.file_id = in.Id();
        view_.file_size = in.U64();
        in.U64();  // creation date
        view_.packets = in.U64();
        view_.play_duration = in.U64();
        in.U64();  // send duration
        view_.preroll_ms = in.U64();
        if (view_.preroll_ms > kMostPrerollMs) Refuse("its header states an impossible preroll");
        view_.flags = in.U32();
        view_.packet_bytes = in.U32();
        const bool one_size = view_.packet_bytes == in.U32();
        if (!one_size || view_.packet_bytes == 0 || view_.packet_bytes > kMostPacketBytes)
            Refuse("its packets have no single size");
    }

    HeaderView& view_;
};

}  // namespace

std::uint64_t HeaderObjectBytes(std::span<const std::uint8_t> first) {
    ByteReader in(first);
    const Guid id = in.Id();
    const std::uint64_t size = in.U64();
    return id == guid::kHeader && size >= kHeaderChildren ? size : 0;
}

HeaderView ReadHeaderView(std::vector<std::uint8_t> bytes) {
    HeaderView view;
    view.bytes = std::move(bytes);
    HeaderReader(view).Read();
    return view;
}

}  // namespace engine::asf
