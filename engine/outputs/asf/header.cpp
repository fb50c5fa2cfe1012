#include "engine/outputs/asf/header.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <limits>
#include <random>

#include "engine/outputs/asf/guids.h"
#include "engine/outputs/asf/header_extension.h"
#include "engine/outputs/asf/packet_size.h"
#include "platform/error.h"

namespace engine::asf {
namespace {

constexpr std::size_t kMaxStreams = 127;
constexpr std::size_t kMaxCount16 = 0xFFFF;
constexpr std::size_t kBitmapHeaderBytes = 40;
constexpr std::uint32_t kUnknownWindow = 0xFFFFFFFF;
constexpr std::uint32_t kDefaultWindowMs = 3000;
constexpr std::uint64_t kDataObjectFixedBytes = 50;
constexpr std::int64_t kUnixEpoch = 116'444'736'000'000'000;  // in 100 ns since 1601

constexpr std::uint32_t kBroadcast = 1;
constexpr std::uint32_t kSeekable = 2;

enum class CodecType : std::uint16_t { Video = 1, Audio = 2 };
enum class ValueType : std::uint16_t { String = 0, Dword = 3 };

void Check(const OutputHeader& header) {
    const auto refuse = [](std::string text) {
        throw platform::Error(platform::kInvalidArgument, std::move(text));
    };
    if (header.streams.empty() || header.streams.size() > kMaxStreams)
        refuse(fmt::format("An output of {} streams: a file holds 1 to {}", header.streams.size(),
                           kMaxStreams));
    if (header.attributes.size() > kMaxCount16)
        refuse(fmt::format("{} attributes: a file holds {} at most", header.attributes.size(),
                           kMaxCount16));
    for (const StreamHeader& stream : header.streams) {
        if (stream.extra_data.size() > kMaxCount16 - kBitmapHeaderBytes)
            refuse(fmt::format("Codec \"{}\": {} bytes of set-up data are more than a file holds",
                               stream.codec_name, stream.extra_data.size()));
        const VideoHeader* video = std::get_if<VideoHeader>(&stream.format);
        if (video && (video->width <= 0 || video->height <= 0))
            refuse(fmt::format("A picture of {} x {}: both sizes must be above 0", video->width,
                               video->height));
    }
}

std::uint32_t MaximumRate(const OutputHeader& header, const HeaderFacts& facts,
                          const HeaderNumbers& numbers) {
    std::uint64_t total = 0;
    for (std::size_t i = 0; i < header.streams.size(); ++i) {
        const std::uint32_t peak = header.streams[i].peak_rate_bps;
        total += peak != 0 ? peak : AverageRate(header, numbers, i);
    }
    return RateInPackets(total, facts.packet_bytes);
}

void AppendFileProperties(ByteWriter& out, const OutputHeader& header, const HeaderFacts& facts,
                          const HeaderNumbers& numbers) {
    ByteWriter body;
    body.Id(facts.file_id);
    body.U64(numbers.file_size);
    body.U64(facts.creation_date);
    body.U64(numbers.packets);
    body.U64(static_cast<std::uint64_t>(numbers.play_duration.count));
    body.U64(static_cast<std::uint64_t>(numbers.send_duration.count));
    body.U64(facts.preroll_ms);
    body.U32(numbers.complete ? kSeekable : kBroadcast);
    body.U32(facts.packet_bytes);
    body.U32(facts.packet_bytes);
    body.U32(MaximumRate(header, facts, numbers));
    out.Object(guid::kFileProperties, body);
}

/// A text behind its length in characters, the terminator counted.
void AppendCounted(ByteWriter& out, std::string_view text) {
    const std::vector<std::uint8_t> bytes = Utf16(text);
    out.U16(static_cast<std::uint16_t>(bytes.size() / 2));
    out.Bytes(bytes);
}

void AppendCodecList(ByteWriter& out, const OutputHeader& header) {
    ByteWriter body;
    body.Id(guid::kCodecListReserved);
    body.U32(static_cast<std::uint32_t>(header.streams.size()));
    for (const StreamHeader& stream : header.streams) {
        const AudioHeader* audio = std::get_if<AudioHeader>(&stream.format);
        body.U16(static_cast<std::uint16_t>(audio ? CodecType::Audio : CodecType::Video));
        AppendCounted(body, stream.codec_name);
        AppendCounted(body, stream.codec_description);
        if (audio) {
            body.U16(2);
            body.U16(audio->format_tag);
        } else {
            body.U16(4);
            body.U32(std::get<VideoHeader>(stream.format).four_cc);
        }
    }
    out.Object(guid::kCodecList, body);
}

void AppendFormat(ByteWriter& out, const AudioHeader& audio, const StreamHeader& stream,
                  std::uint32_t average_rate_bps) {
    out.U16(audio.format_tag);
    out.U16(audio.channels);
    out.U32(audio.sampling_rate);
    out.U32(stream.rate_is_estimate ? average_rate_bps / 8 : audio.average_bytes_per_second);
    out.U16(audio.block_align);
    out.U16(audio.bits_per_sample);
    out.U16(static_cast<std::uint16_t>(stream.extra_data.size()));
    out.Bytes(stream.extra_data);
}

void AppendFormat(ByteWriter& out, const VideoHeader& video, const StreamHeader& stream) {
    const auto bitmap_bytes =
        static_cast<std::uint32_t>(kBitmapHeaderBytes + stream.extra_data.size());
    const auto width = static_cast<std::uint32_t>(video.width);
    const auto height = static_cast<std::uint32_t>(video.height);
    const std::uint64_t row_bytes = (std::uint64_t{width} * video.bits_per_pixel + 31) / 32 * 4;
    out.U32(width);
    out.U32(height);
    out.U8(2);
    out.U16(static_cast<std::uint16_t>(bitmap_bytes));
    out.U32(bitmap_bytes);
    out.U32(width);
    out.U32(height);
    out.U16(1);
    out.U16(video.bits_per_pixel);
    out.U32(video.four_cc);
    out.U32(static_cast<std::uint32_t>(row_bytes * height));
    out.Zeros(16);  // resolution and palette
    out.Bytes(stream.extra_data);
}

void AppendStreamProperties(ByteWriter& out, const OutputHeader& header,
                            const HeaderNumbers& numbers, std::size_t index) {
    const StreamHeader& stream = header.streams[index];
    const AudioHeader* audio = std::get_if<AudioHeader>(&stream.format);
    ByteWriter format;
    ByteWriter error_correction;
    if (audio) {
        AppendFormat(format, *audio, stream, AverageRate(header, numbers, index));
        error_correction.U8(1);
        error_correction.U16(audio->block_align);
        error_correction.U16(audio->block_align);
        error_correction.U16(1);
        error_correction.U8(0);
    } else {
        AppendFormat(format, std::get<VideoHeader>(stream.format), stream);
    }
    ByteWriter body;
    body.Id(audio ? guid::kAudioStream : guid::kVideoStream);
    body.Id(audio ? guid::kAudioSpread : guid::kNoErrorCorrection);
    body.U64(0);  // time offset
    body.U32(static_cast<std::uint32_t>(format.size()));
    body.U32(static_cast<std::uint32_t>(error_correction.size()));
    body.U16(StreamNumber(index));
    body.U32(0);
    body.Bytes(format.bytes());
    body.Bytes(error_correction.bytes());
    out.Object(guid::kStreamProperties, body);
}

void AppendContentDescription(ByteWriter& out, const ContentDescription& content) {
    ByteWriter body;
    ByteWriter texts;
    for (const std::string* text : {&content.title, &content.author, &content.copyright,
                                    &content.description, &content.rating}) {
        const std::vector<std::uint8_t> bytes =
            text->empty() ? std::vector<std::uint8_t>() : Utf16(*text);
        body.U16(static_cast<std::uint16_t>(bytes.size()));
        texts.Bytes(bytes);
    }
    body.Bytes(texts.bytes());
    out.Object(guid::kContentDescription, body);
}

void AppendExtendedContent(ByteWriter& out, const OutputHeader& header) {
    ByteWriter body;
    body.U16(static_cast<std::uint16_t>(header.attributes.size()));
    for (const auto& [name, value] : header.attributes) {
        const std::vector<std::uint8_t> name_text = Utf16(name);
        body.U16(static_cast<std::uint16_t>(name_text.size()));
        body.Bytes(name_text);
        if (const std::int32_t* number = std::get_if<std::int32_t>(&value)) {
            body.U16(static_cast<std::uint16_t>(ValueType::Dword));
            body.U16(4);
            body.I32(*number);
        } else {
            const std::vector<std::uint8_t> text = Utf16(std::get<std::string>(value));
            body.U16(static_cast<std::uint16_t>(ValueType::String));
            body.U16(static_cast<std::uint16_t>(text.size()));
            body.Bytes(text);
        }
    }
    out.Object(guid::kExtendedContent, body);
}

void AppendStreamBitRates(ByteWriter& out, const OutputHeader& header, const HeaderFacts& facts,
                          const HeaderNumbers& numbers) {
    ByteWriter body;
    body.U16(static_cast<std::uint16_t>(header.streams.size()));
    for (std::size_t i = 0; i < header.streams.size(); ++i) {
        body.U16(StreamNumber(i));
        body.U32(RateInPackets(AverageRate(header, numbers, i), facts.packet_bytes));
    }
    out.Object(guid::kStreamBitRates, body);
}

}  // namespace

Guid RandomFileId() {
    std::random_device random;
    Guid id;
    id.first = random();
    id.second = static_cast<std::uint16_t>(random());
    id.third = static_cast<std::uint16_t>((random() & 0x0FFFU) | 0x4000U);
    for (std::uint8_t& byte : id.rest) byte = static_cast<std::uint8_t>(random());
    id.rest[0] = static_cast<std::uint8_t>((id.rest[0] & 0x3FU) | 0x80U);
    return id;
}

std::uint64_t CreationDateNow() {
    const auto since_1970 = std::chrono::system_clock::now().time_since_epoch();
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(since_1970).count();
    return static_cast<std::uint64_t>(seconds * Ticks::kPerSecond + kUnixEpoch);
}

std::uint32_t PrerollMs(const OutputHeader& header) {
    std::uint32_t largest = 0;
    for (const StreamHeader& stream : header.streams)
        for (const std::uint32_t window : {stream.buffer_ms, stream.peak_buffer_ms})
            largest = std::max(largest, window == kUnknownWindow ? kDefaultWindowMs : window);
    return largest == 0 ? kDefaultWindowMs : largest;
}

std::uint8_t StreamNumber(std::size_t stream_index) {
    return static_cast<std::uint8_t>(stream_index + 1);
}

std::vector<std::uint8_t> BuildHeader(const OutputHeader& header, const HeaderFacts& facts,
                                      const HeaderNumbers& numbers) {
    Check(header);
    ByteWriter children;
    AppendFileProperties(children, header, facts, numbers);
    AppendHeaderExtension(children, header, facts, numbers);
    AppendCodecList(children, header);
    for (std::size_t i = 0; i < header.streams.size(); ++i)
        AppendStreamProperties(children, header, numbers, i);
    AppendContentDescription(children, header.content);
    AppendExtendedContent(children, header);
    AppendStreamBitRates(children, header, facts, numbers);

    constexpr std::size_t other_children = 6;  // one of each but the stream properties
    ByteWriter body;
    body.U32(static_cast<std::uint32_t>(header.streams.size() + other_children));
    body.U8(1);
    body.U8(2);
    body.Bytes(children.bytes());

    ByteWriter out;
    out.Object(guid::kHeader, body);
    out.Id(guid::kData);
    out.U64(kDataObjectFixedBytes + (numbers.complete ? numbers.packets * facts.packet_bytes : 0));
    out.Id(facts.file_id);
    out.U64(numbers.packets);
    out.U16(0x0101);
    return {out.bytes().begin(), out.bytes().end()};
}

}  // namespace engine::asf
