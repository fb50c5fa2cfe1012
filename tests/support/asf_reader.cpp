#include "support/asf_reader.h"

#include <fmt/format.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>

namespace asf_reader {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// A stretch of the file that is read from front to back.
class Cursor {
  public:
    Cursor(const Bytes& bytes, std::size_t begin, std::size_t end)
        : bytes_(bytes), at_(begin), end_(end) {}

    std::size_t at() const { return at_; }
    std::size_t left() const { return end_ - at_; }

    void Expect(bool good, const char* what) const {
        if (!good) throw std::runtime_error(fmt::format("byte {}: {}", at_, what));
    }
    std::uint64_t Number(std::size_t count) {
        Expect(left() >= count, "number past the end");
        std::uint64_t value = 0;
        for (std::size_t i = count; i-- > 0;) value = value << 8 | bytes_[at_ + i];
        at_ += count;
        return value;
    }
    unsigned U8() { return static_cast<unsigned>(Number(1)); }
    unsigned U16() { return static_cast<unsigned>(Number(2)); }
    std::uint32_t U32() { return static_cast<std::uint32_t>(Number(4)); }
    std::uint64_t U64() { return Number(8); }
    void Must(std::uint64_t value, std::size_t count, const char* what) {
        Expect(Number(count) == value, what);
    }
    Bytes Take(std::size_t count) {
        Expect(left() >= count, "bytes past the end");
        const auto begin = bytes_.begin() + static_cast<std::ptrdiff_t>(at_);
        at_ += count;
        return {begin, begin + static_cast<std::ptrdiff_t>(count)};
    }
    Cursor Part(std::size_t count) {
        Expect(left() >= count, "part past the end");
        const Cursor part(bytes_, at_, at_ + count);
        at_ += count;
        return part;
    }
    std::string Guid() {
        const std::uint64_t first = Number(4), second = Number(2), third = Number(2);
        std::string text = fmt::format("{:08X}-{:04X}-{:04X}-", first, second, third);
        for (int i = 0; i < 8; ++i) text += fmt::format("{:02X}{}", U8(), i == 1 ? "-" : "");
        return text;
    }
    void MustGuid(const char* guid) { Expect(Guid() == guid, guid); }
    /// UTF-16 with its terminator, as UTF-8.
    std::string Text(std::size_t byte_count) {
        Cursor part = Part(byte_count);
        Expect(byte_count >= 2 && byte_count % 2 == 0, "odd text");
        std::u16string text;
        while (part.left() > 2) {
            text += static_cast<char16_t>(part.U16());
            part.Expect(text.back() != 0, "text with an inner end");
        }
        part.Must(0, 2, "text without an end");
        return std::filesystem::path(text).string();  // throws at half a pair
    }
    void End(const char* what) const { Expect(left() == 0, what); }

  private:
    const Bytes& bytes_;
    std::size_t at_;
    std::size_t end_;
};

constexpr const char* kHeader = "75B22630-668E-11CF-A6D9-00AA0062CE6C";
constexpr const char* kData = "75B22636-668E-11CF-A6D9-00AA0062CE6C";
constexpr const char* kSimpleIndex = "33000890-E5B1-11CF-89F4-00A0C90349CB";

Value ReadValue(Cursor& in, int type, std::size_t bytes, std::size_t boolean_bytes) {
    switch (type) {
        case 0:
            return in.Text(bytes);
        case 2:
            in.Expect(bytes == boolean_bytes, "size of a BOOL");
            break;
        case 3:
            in.Expect(bytes == 4, "size of a DWORD");
            break;
        default:
            in.Expect(false, "type of an attribute");
    }
    return static_cast<std::uint32_t>(in.Number(bytes));
}

void FileProperties(Cursor in, Header& h) {
    h.file_id = in.Guid();
    h.file_size = in.U64();
    h.creation_date = in.U64();
    h.packets = in.U64();
    h.play_duration = in.U64();
    h.send_duration = in.U64();
    h.preroll_ms = in.U64();
    h.flags = in.U32();
    h.packet_bytes = in.U32();
    in.Must(h.packet_bytes, 4, "packets of several sizes");
    h.max_rate = in.U32();
    in.End("File Properties");
}

void LanguageList(Cursor in, Header& h) {
    for (unsigned count = in.U16(); count > 0; --count) h.languages.push_back(in.Text(in.U8()));
    in.End("Language List");
}

void ExtendedStreamProperties(Cursor in, Header& h) {
    ExtendedStream s;
    s.start = in.U64();
    s.end = in.U64();
    for (std::uint32_t* field : {&s.rate, &s.buffer_ms, &s.fullness, &s.peak_rate,
                                 &s.peak_buffer_ms, &s.peak_fullness, &s.largest_object, &s.flags})
        *field = in.U32();
    s.number = static_cast<int>(in.U16());
    s.language = static_cast<int>(in.U16());
    s.ticks_per_frame = in.U64();
    in.Must(0, 2, "stream names");
    in.Must(0, 2, "payload extensions");
    in.End("Extended Stream Properties");
    h.extended_streams.push_back(s);
}

void Metadata(Cursor in, Header& h) {
    for (unsigned count = in.U16(); count > 0; --count) {
        Attribute a;
        in.Must(0, 2, "language of an attribute");
        a.stream = static_cast<int>(in.U16());
        const unsigned name_bytes = in.U16();
        a.type = static_cast<int>(in.U16());
        const std::uint32_t bytes = in.U32();
        a.name = in.Text(name_bytes);
        a.value = ReadValue(in, a.type, bytes, 2);
        h.metadata.push_back(a);
    }
    in.End("Metadata");
}

void PaddingObject(Cursor in, Header& h) {
    h.padding_bytes = in.left();
    while (in.left() > 0) in.Must(0, 1, "padding");
}

void CodecList(Cursor in, Header& h) {
    in.MustGuid("86D15241-311D-11D0-A3A4-00A0C90348F6");
    for (std::uint32_t count = in.U32(); count > 0; --count) {
        Codec c;
        c.type = static_cast<int>(in.U16());
        c.name = in.Text(2 * in.U16());
        c.description = in.Text(2 * in.U16());
        c.info = in.Take(in.U16());
        h.codecs.push_back(c);
    }
    in.End("Codec List");
}

void ReadStreamProperties(Cursor in, Header& h) {
    StreamProperties s;
    const std::string type = in.Guid();
    s.audio = type == "F8699E40-5B4D-11CF-A8FD-00805F5C442B";
    in.Expect(s.audio || type == "BC19EFC0-5B4D-11CF-A8FD-00805F5C442B", "type of a stream");
    s.error_correction = in.Guid();
    in.Must(0, 8, "time offset");
    const std::uint32_t format_bytes = in.U32();
    const std::uint32_t correction_bytes = in.U32();
    s.number = static_cast<int>(in.U16());
    in.Expect(s.number >= 1 && s.number <= 127, "stream number or flags");
    in.Must(0, 4, "reserved");
    Cursor format = in.Part(format_bytes);
    s.error_correction_data = in.Take(correction_bytes);
    in.End("Stream Properties");
    if (s.audio) {
        s.format_tag = format.U16();
        s.channels = format.U16();
        s.sampling_rate = format.U32();
        s.average_bytes = format.U32();
        s.block_align = format.U16();
        s.bits_per_sample = format.U16();
        s.extra_data = format.Take(format.U16());
    } else {
        const std::uint32_t width = format.U32(), height = format.U32();
        format.Must(2, 1, "reserved");
        const unsigned bitmap_bytes = format.U16();
        format.Must(bitmap_bytes, 4, "two sizes of a bitmap header");
        s.width = static_cast<int>(format.U32());
        s.height = static_cast<int>(format.U32());
        format.Expect(width == static_cast<std::uint32_t>(std::abs(s.width)) &&
                          height == static_cast<std::uint32_t>(std::abs(s.height)),
                      "two sizes of a picture");
        format.Must(1, 2, "planes");
        s.bit_count = format.U16();
        const Bytes four_cc = format.Take(4);
        s.four_cc.assign(four_cc.begin(), four_cc.end());
        s.image_bytes = format.U32();
        format.Must(0, 8, "resolution");
        format.Must(0, 8, "palette");
        s.extra_data = format.Take(bitmap_bytes - 40U);
    }
    format.End("stream format");
    h.streams.push_back(s);
}

void ContentDescription(Cursor in, Header& h) {
    std::vector<unsigned> lengths;
    for (int i = 0; i < 5; ++i) lengths.push_back(in.U16());
    for (const unsigned length : lengths) h.content.push_back(length == 0 ? "" : in.Text(length));
    in.End("Content Description");
}

void ExtendedContent(Cursor in, Header& h) {
    for (unsigned count = in.U16(); count > 0; --count) {
        Attribute a;
        a.name = in.Text(in.U16());
        a.type = static_cast<int>(in.U16());
        const unsigned bytes = in.U16();
        a.value = ReadValue(in, a.type, bytes, 4);
        h.attributes.push_back(a);
    }
    in.End("Extended Content Description");
}

void StreamBitRates(Cursor in, Header& h) {
    for (unsigned count = in.U16(); count > 0; --count) {
        const int number = static_cast<int>(in.U16());
        h.stream_rates.emplace_back(number, in.U32());
    }
    in.End("Stream Bitrate Properties");
}

void HeaderExtension(Cursor in, Header& h);

using Read1 = void (*)(Cursor, Header&);
const std::map<std::string, Read1> kReaders = {
    {"8CABDCA1-A947-11CF-8EE4-00C00C205365", FileProperties},
    {"5FBF03B5-A92E-11CF-8EE3-00C00C205365", HeaderExtension},
    {"86D15240-311D-11D0-A3A4-00A0C90348F6", CodecList},
    {"B7DC0791-A9B7-11CF-8EE6-00C00C205365", ReadStreamProperties},
    {"75B22633-668E-11CF-A6D9-00AA0062CE6C", ContentDescription},
    {"D2D0A440-E307-11D2-97F0-00A0C95EA850", ExtendedContent},
    {"7BF875CE-468D-11D1-8D82-006097C9A2B2", StreamBitRates},
    {"7C4346A9-EFE0-4BFC-B229-393EDE415C85", LanguageList},
    {"14E6A5CB-C672-4332-8399-A96952065B5A", ExtendedStreamProperties},
    {"C5F8CBEA-5BAF-4877-8467-AA8C44FA4CCA", Metadata},
    {"1806D474-CADF-4509-A4BA-9AABCB96AAE8", PaddingObject},
};

std::vector<std::string> Children(Cursor in, Header& h) {
    std::vector<std::string> guids;
    while (in.left() > 0) {
        guids.push_back(in.Guid());
        const std::uint64_t size = in.U64();
        in.Expect(size >= 24, "size of an object");
        const auto reader = kReaders.find(guids.back());
        in.Expect(reader != kReaders.end(), "unknown object");
        reader->second(in.Part(size - 24), h);
    }
    return guids;
}

void HeaderExtension(Cursor in, Header& h) {
    in.MustGuid("ABD3D211-A9BA-11CF-8EE6-00C00C205365");
    in.Must(6, 2, "reserved");
    in.Must(in.left() - 4, 4, "size of the extension");
    h.extension_children = Children(in, h);
}

/// What is open of each stream while the packets are walked.
struct Assembly {
    std::map<int, MediaObject> open;  // by stream
    std::map<int, std::size_t> sizes;
    std::map<int, unsigned> next_number;
};

void Payload(Cursor& in, std::size_t place, File& file, Assembly& assembly) {
    const unsigned stream_byte = in.U8();
    const int stream = static_cast<int>(stream_byte & 0x7FU);
    const bool key = (stream_byte & 0x80U) != 0;
    const unsigned number = in.U8();
    const std::uint32_t offset = in.U32();
    in.Must(8, 1, "replicated data");
    const std::uint32_t size = in.U32();
    const std::uint32_t presentation = in.U32();
    const Bytes data = in.Take(in.U16());
    in.Expect(!data.empty(), "empty payload");

    MediaObject& object = assembly.open[stream];
    if (offset == 0) {
        in.Expect(object.bytes.empty(), "object begins in another");
        in.Expect(number == assembly.next_number[stream], "object number");
        assembly.next_number[stream] = (number + 1) & 0xFFU;
        assembly.sizes[stream] = size;
        object = {stream, key, presentation, file.packets.size(), 0, place, {}};
    }
    in.Expect(((number + 1) & 0xFFU) == assembly.next_number[stream], "number in an object");
    in.Expect(offset == object.bytes.size(), "offset in an object");
    in.Expect(size == assembly.sizes[stream] && key == object.key &&
                  presentation == object.presentation_ms,
              "fragments differ");
    object.bytes.insert(object.bytes.end(), data.begin(), data.end());
    in.Expect(object.bytes.size() <= size, "object longer than its size");
    if (object.bytes.size() == size) {
        object.last_packet = file.packets.size();
        file.objects.push_back(std::move(object));
        object = {};
    }
}

void ReadPacket(Cursor in, File& file, Assembly& assembly) {
    in.Must(0x82, 1, "error correction flags");
    in.Must(0, 2, "error correction data");
    const unsigned length_flags = in.U8();
    const unsigned padding_kind = length_flags & ~1U;
    in.Expect((length_flags & 1U) == 1 && (padding_kind & ~0x18U) == 0 && padding_kind != 0x18,
              "length flags");
    in.Must(0x5D, 1, "property flags");
    Packet packet;
    packet.padding = padding_kind == 0x08 ? in.U8() : padding_kind == 0x10 ? in.U16() : 0;
    packet.send_ms = in.U32();
    packet.duration_ms = in.U16();
    const unsigned payload_flags = in.U8();
    packet.payloads = payload_flags & 0x3FU;
    in.Expect((payload_flags & 0xC0U) == 0x80 && packet.payloads > 0, "payload flags");
    for (std::size_t i = 0; i < packet.payloads; ++i) Payload(in, i, file, assembly);
    in.Expect(in.left() == packet.padding, "payloads do not end at the padding");
    while (in.left() > 0) in.Must(0, 1, "padding");
    file.packets.push_back(packet);
}

Index ReadIndex(Cursor& in, const Header& header) {
    in.MustGuid(kSimpleIndex);
    const std::uint64_t size = in.U64();
    Cursor body = in.Part(size - 24);
    body.MustGuid(header.file_id.c_str());
    Index index;
    index.interval = body.U64();
    index.most_packets = body.U32();
    for (std::uint32_t count = body.U32(); count > 0; --count) {
        const std::uint32_t packet = body.U32();
        index.entries.push_back({packet, body.U16()});
    }
    body.End("Simple Index");
    return index;
}

Header ReadHeader(Cursor& in) {
    Header header;
    in.MustGuid(kHeader);
    header.bytes = in.U64();
    in.Expect(header.bytes >= 30, "size of the header");
    Cursor body = in.Part(header.bytes - 24);
    const std::uint32_t count = body.U32();
    body.Must(0x0201, 2, "reserved");
    header.children = Children(body, header);
    in.Expect(header.children.size() == count, "number of header objects");
    in.MustGuid(kData);
    header.data_size = in.U64();
    in.MustGuid(header.file_id.c_str());
    header.data_packets = in.U64();
    in.Must(0x0101, 2, "reserved");
    return header;
}

}  // namespace

Header ReadHeader(const Bytes& bytes) {
    Cursor in(bytes, 0, bytes.size());
    return ReadHeader(in);
}

File Read(const Bytes& bytes) {
    File file;
    Cursor in(bytes, 0, bytes.size());
    Header& header = file.header = ReadHeader(in);
    in.Expect(header.packet_bytes >= 100 && header.packet_bytes <= 65536, "packet size");
    const bool recording = (header.flags & 1U) != 0;
    std::uint64_t count = header.data_packets;
    if (recording) {
        in.Expect(header.data_size == 50, "size of the data while recording");
        count = in.left() / header.packet_bytes;
    } else {
        in.Expect(header.data_packets == header.packets, "two packet counts");
        in.Expect(header.data_size == 50 + count * header.packet_bytes, "size of the data");
        in.Expect(header.file_size == bytes.size(), "size of the file");
    }
    Assembly assembly;
    for (std::uint64_t i = 0; i < count; ++i)
        ReadPacket(in.Part(header.packet_bytes), file, assembly);
    for (const auto& [stream, object] : assembly.open) file.unfinished += !object.bytes.empty();
    if (!recording)
        while (in.left() > 0) file.indexes.push_back(ReadIndex(in, header));
    return file;
}

Bytes FileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("cannot open " + path);
    return {std::istreambuf_iterator<char>(in), {}};
}

File ReadFile(const std::string& path) { return Read(FileBytes(path)); }

}  // namespace asf_reader
