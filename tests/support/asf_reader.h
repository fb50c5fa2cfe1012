// A strict reader of the container, independent of the writer: it takes apart a whole file, checks
// every length and count against every other, and throws std::runtime_error at the first that is
// wrong, with the place in the file.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace asf_reader {

struct StreamProperties {
    bool audio = false;
    int number = 0;
    std::string error_correction;  // GUID
    std::vector<std::uint8_t> error_correction_data;
    std::vector<std::uint8_t> extra_data;
    // Audio: WAVEFORMATEX
    unsigned format_tag = 0, channels = 0, sampling_rate = 0, average_bytes = 0, block_align = 0,
             bits_per_sample = 0;
    // Video: the frame's size and BITMAPINFOHEADER
    int width = 0, height = 0;
    unsigned bit_count = 0, image_bytes = 0;
    std::string four_cc;  // four bytes
};

struct ExtendedStream {
    std::uint64_t start = 0, end = 0;
    std::uint32_t rate = 0, buffer_ms = 0, fullness = 0, peak_rate = 0, peak_buffer_ms = 0,
                  peak_fullness = 0, largest_object = 0, flags = 0;
    int number = 0, language = 0;
    std::uint64_t ticks_per_frame = 0;
};

struct Codec {
    int type = 0;
    std::string name, description;
    std::vector<std::uint8_t> info;
};

/// A DWORD or BOOL, or a text.
using Value = std::variant<std::uint32_t, std::string>;
struct Attribute {
    int stream = 0;  // 0 = the file
    std::string name;
    int type = 0;
    Value value;
};

struct Header {
    std::uint64_t bytes = 0;            // of the Header Object
    std::vector<std::string> children;  // GUIDs in order
    std::string file_id;
    std::uint64_t file_size = 0, creation_date = 0, packets = 0, play_duration = 0,
                  send_duration = 0, preroll_ms = 0;
    std::uint32_t flags = 0, packet_bytes = 0, max_rate = 0;
    std::vector<std::string> extension_children;
    std::vector<std::string> languages;
    std::vector<ExtendedStream> extended_streams;
    std::vector<Attribute> metadata;
    std::uint64_t padding_bytes = 0;
    std::vector<Codec> codecs;
    std::vector<StreamProperties> streams;
    std::vector<std::string> content;  // title, author, copyright, description, rating
    std::vector<Attribute> attributes;
    std::vector<std::pair<int, std::uint32_t>> stream_rates;  // stream number, bits per second
    // The fixed part of the Data Object
    std::uint64_t data_size = 0, data_packets = 0;
};

struct Packet {
    std::uint32_t send_ms = 0;
    unsigned duration_ms = 0;
    std::size_t payloads = 0;
    std::size_t padding = 0;  // zero bytes at the end
};

/// One coded frame put together again.
struct MediaObject {
    int stream = 0;
    bool key = false;
    std::uint32_t presentation_ms = 0;  // preroll included
    std::size_t first_packet = 0, last_packet = 0;
    std::size_t payload_in_packet = 0;  // place of its first payload in its packet
    std::vector<std::uint8_t> bytes;
};

struct IndexEntry {
    std::uint32_t packet = 0;
    unsigned packets = 0;
};

struct Index {
    std::uint64_t interval = 0;
    std::uint32_t most_packets = 0;
    std::vector<IndexEntry> entries;
};

struct File {
    Header header;
    std::vector<Packet> packets;
    std::vector<MediaObject> objects;  // complete ones, in the order of their ends
    std::size_t unfinished = 0;        // objects that the data end in the middle of
    std::vector<Index> indexes;
};

/// Reads the Header Object and the fixed part of the Data Object at the start of `bytes`.
Header ReadHeader(const std::vector<std::uint8_t>& bytes);

/// Reads a whole file. Of a recording that was not finished it takes whole packets to the end and
/// leaves out what follows them.
File Read(const std::vector<std::uint8_t>& bytes);
File ReadFile(const std::string& path);

std::vector<std::uint8_t> FileBytes(const std::string& path);

}  // namespace asf_reader
