#include "engine/outputs/asf/header_extension.h"

#include <string_view>

#include "engine/outputs/asf/guids.h"

namespace engine::asf {
namespace {

constexpr std::size_t kPaddingBytes = 500;  // for tools that add or lengthen texts later
constexpr std::uint32_t kSeekable = 2;

enum class MetadataType : std::uint16_t { String = 0, Boolean = 2, Dword = 3 };

void AppendLanguageList(ByteWriter& out) {
    const std::vector<std::uint8_t> language = Utf16("en-us");
    ByteWriter body;
    body.U16(1);
    body.U8(static_cast<std::uint8_t>(language.size()));
    body.Bytes(language);
    out.Object(guid::kLanguageList, body);
}

std::uint64_t TicksPerFrame(const StreamHeader& stream) {
    const VideoHeader* video = std::get_if<VideoHeader>(&stream.format);
    if (video == nullptr || video->frame_rate_thousandths == 0) return 0;
    return Ticks::kPerSecond * 1000ULL / video->frame_rate_thousandths;
}

void AppendExtendedStream(ByteWriter& out, const OutputHeader& header, const HeaderFacts& facts,
                          const HeaderNumbers& numbers, std::size_t i) {
    const StreamHeader& stream = header.streams[i];
    const std::uint32_t rate = AverageRate(header, numbers, i);
    const std::uint32_t window = stream.buffer_ms != 0 ? stream.buffer_ms : facts.preroll_ms;
    ByteWriter body;
    body.U64(0);  // start and end time: unknown
    body.U64(0);
    body.U32(rate);
    body.U32(window);
    body.U32(0);  // fullness at the start
    body.U32(stream.peak_rate_bps != 0 ? stream.peak_rate_bps : rate);
    body.U32(stream.peak_buffer_ms != 0 ? stream.peak_buffer_ms : window);
    body.U32(0);
    body.U32(numbers.largest_objects.empty() ? 0 : numbers.largest_objects[i]);
    body.U32(kSeekable);
    body.U16(StreamNumber(i));
    body.U16(0);  // language: the first of the list
    body.U64(TicksPerFrame(stream));
    body.U16(0);  // neither names
    body.U16(0);  // nor payload extensions
    out.Object(guid::kExtendedStream, body);
}

/// The records of the Metadata Object, counted.
class Metadata {
  public:
    void Boolean(std::uint16_t stream, std::string_view name, bool value) {
        Begin(stream, name, MetadataType::Boolean, 2);
        records_.U16(value ? 1 : 0);
    }
    void Dword(std::uint16_t stream, std::string_view name, std::uint32_t value) {
        Begin(stream, name, MetadataType::Dword, 4);
        records_.U32(value);
    }
    void String(std::uint16_t stream, std::string_view name, std::string_view value) {
        const std::vector<std::uint8_t> text = Utf16(value);
        Begin(stream, name, MetadataType::String, text.size());
        records_.Bytes(text);
    }
    void AppendTo(ByteWriter& out) const {
        ByteWriter body;
        body.U16(count_);
        body.Bytes(records_.bytes());
        out.Object(guid::kMetadata, body);
    }

  private:
    void Begin(std::uint16_t stream, std::string_view name, MetadataType type, std::size_t bytes) {
        const std::vector<std::uint8_t> name_text = Utf16(name);
        records_.U16(0);  // language
        records_.U16(stream);
        records_.U16(static_cast<std::uint16_t>(name_text.size()));
        records_.U16(static_cast<std::uint16_t>(type));
        records_.U32(static_cast<std::uint32_t>(bytes));
        records_.Bytes(name_text);
        ++count_;
    }

    ByteWriter records_;
    std::uint16_t count_ = 0;
};

void AppendMetadata(ByteWriter& out, const OutputHeader& header) {
    Metadata metadata;
    for (std::size_t i = 0; i < header.streams.size(); ++i) {
        const StreamHeader& stream = header.streams[i];
        const std::uint8_t number = StreamNumber(i);
        metadata.Boolean(number, "IsVBR", stream.variable_rate);
        if (!stream.conformance.empty())
            metadata.String(number, "DeviceConformanceTemplate", stream.conformance);
        if (const VideoHeader* video = std::get_if<VideoHeader>(&stream.format)) {
            metadata.Dword(number, "AspectRatioX", video->pixel_aspect_x);
            metadata.Dword(number, "AspectRatioY", video->pixel_aspect_y);
        }
    }
    metadata.AppendTo(out);
}

}  // namespace

std::uint32_t AverageRate(const OutputHeader& header, const HeaderNumbers& numbers,
                          std::size_t stream_index) {
    const StreamHeader& stream = header.streams[stream_index];
    const bool stated = stream.average_rate_bps != 0 && !stream.rate_is_estimate;
    if (stated || numbers.measured_rates.empty()) return stream.average_rate_bps;
    return numbers.measured_rates[stream_index];
}

void AppendHeaderExtension(ByteWriter& out, const OutputHeader& header, const HeaderFacts& facts,
                           const HeaderNumbers& numbers) {
    ByteWriter children;
    AppendLanguageList(children);
    for (std::size_t i = 0; i < header.streams.size(); ++i)
        AppendExtendedStream(children, header, facts, numbers, i);
    AppendMetadata(children, header);
    ByteWriter padding;
    padding.Zeros(kPaddingBytes);
    children.Object(guid::kPadding, padding);

    ByteWriter body;
    body.Id(guid::kExtensionReserved);
    body.U16(6);
    body.U32(static_cast<std::uint32_t>(children.size()));
    body.Bytes(children.bytes());
    out.Object(guid::kHeaderExtension, body);
}

}  // namespace engine::asf
