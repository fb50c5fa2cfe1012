// What an output is told about its streams before the first frame comes.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "platform/encoder.h"

namespace engine {

enum class MediaKind { Audio, Video };

struct AudioHeader {
    std::uint16_t format_tag = 0;
    std::uint16_t channels = 0;
    std::uint32_t sampling_rate = 0;
    std::uint32_t average_bytes_per_second = 0;
    std::uint16_t block_align = 0;
    std::uint16_t bits_per_sample = 0;
};

struct VideoHeader {
    std::uint32_t four_cc = 0;  // 0 = uncompressed
    std::uint16_t bits_per_pixel = 24;
    std::int32_t width = 0;
    std::int32_t height = 0;  // above 0 always: players take a negative one for an unsigned number
    std::uint32_t frame_rate_thousandths = 0;  // 0 = unknown
    std::uint32_t pixel_aspect_x = 1;
    std::uint32_t pixel_aspect_y = 1;
};

/// One stream as an output describes it. Rates in bits per second, windows in milliseconds.
struct StreamHeader {
    std::variant<AudioHeader, VideoHeader> format;
    std::vector<std::uint8_t> extra_data;
    std::string codec_name;         // "Windows Media Audio 9"
    std::string codec_description;  // "64 kbps, 44 kHz, stereo CBR"
    bool variable_rate = false;
    std::uint32_t average_rate_bps = 0;
    bool rate_is_estimate = false;  // a file that is finished says what was measured instead
    std::uint32_t buffer_ms = 0;
    std::uint32_t peak_rate_bps = 0;   // 0 = the average rate
    std::uint32_t peak_buffer_ms = 0;  // 0 = the buffer window
    std::string conformance;           // device conformance, "" = none
    /// Frames may come after one that is shown later: players keep one back.
    bool reordered = false;
    /// Of a recording: where nothing changes there is next to nothing in it, for seconds.
    bool sparse = false;

    MediaKind Kind() const {
        return std::holds_alternative<AudioHeader>(format) ? MediaKind::Audio : MediaKind::Video;
    }
};

struct ContentDescription {
    std::string title, author, copyright, description, rating;  // UTF-8, "" = absent
};

struct OutputHeader {
    std::vector<StreamHeader> streams;  // audio before video; CodedFrame::stream indexes it
    ContentDescription content;
    std::vector<std::pair<std::string, platform::AttributeValue>> attributes;
    std::uint32_t min_packet_bytes = 0;  // 0 = not asked for
    std::uint32_t max_packet_bytes = 0;  // 0 = not asked for
};

}  // namespace engine
