// The layouts of a frame's pixels that can be asked for by name.
#pragma once

#include <cstdint>

namespace engine {

struct PixelFormatRow {
    std::uint32_t code;  // FourCC, or the first word of the media subtype
    const char* name;
    const char* av_name;    // libavutil's
    std::uint32_t four_cc;  // of uncompressed frames, 0 = RGB
    std::uint16_t bits;     // a pixel
    std::int32_t step;      // pixels of a row that share their colour
    std::int32_t row_step;  // rows that do
    bool uncompressed;      // readers know it by FourCC and bits
};

/// Null for a code that is none, or has a palette that nobody could choose.
const PixelFormatRow* FindPixelFormat(std::uint32_t code);

}  // namespace engine
