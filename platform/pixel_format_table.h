// The layouts of a frame's pixels that can be asked for by name: the words of the command language,
// the numbers of the object tree and what the engine makes of them.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include "platform/encoder.h"
#include "platform/text.h"

namespace platform {

struct PixelFormatRow {
    std::string_view name;
    std::uint32_t code;     // FourCC, or the first word of the RGB formats' media-subtype GUID
    const char* av_name;    // libavutil's; "" = it has a palette that nobody could choose
    std::uint32_t four_cc;  // of uncompressed frames, 0 = RGB
    std::uint16_t bits;     // a pixel
    std::int32_t step;      // pixels of a row that share their colour
    std::int32_t row_step;  // rows that do
    bool uncompressed;      // readers know it by FourCC and bits
};

// RGB with 16 bits is read as 5 bits a colour, so 5-6-5 cannot be told from it.
// clang-format off
inline constexpr std::array kPixelFormats = {
    //             name      code            av_name     four_cc         bits step row_step uncompressed
    PixelFormatRow{"IYUV",   FourCC("IYUV"), "yuv420p",  FourCC("IYUV"), 12,  2,   2,       true},
    PixelFormatRow{"I420",   FourCC("I420"), "yuv420p",  FourCC("I420"), 12,  2,   2,       true},
    PixelFormatRow{"YV12",   FourCC("YV12"), "yuv420p",  FourCC("YV12"), 12,  2,   2,       true},
    PixelFormatRow{"YUY2",   FourCC("YUY2"), "yuyv422",  FourCC("YUY2"), 16,  2,   1,       true},
    PixelFormatRow{"UYVY",   FourCC("UYVY"), "uyvy422",  FourCC("UYVY"), 16,  2,   1,       true},
    PixelFormatRow{"YVYU",   FourCC("YVYU"), "yvyu422",  FourCC("YVYU"), 16,  2,   1,       true},
    PixelFormatRow{"YVU9",   FourCC("YVU9"), "yuv410p",  FourCC("YVU9"), 9,   4,   4,       true},
    PixelFormatRow{"RGB24",  0xE436EB7D,     "bgr24",    0,              24,  1,   1,       true},
    PixelFormatRow{"RGB32",  0xE436EB7E,     "bgra",     0,              32,  1,   1,       true},
    PixelFormatRow{"RGB555", 0xE436EB7C,     "rgb555le", 0,              16,  1,   1,       true},
    PixelFormatRow{"RGB565", 0xE436EB7B,     "rgb565le", 0,              16,  1,   1,       false},
    PixelFormatRow{"RGB8",   0xE436EB7A,     "",         0,              8,   1,   1,       false},
};
// clang-format on

/// Null for a code that is none.
constexpr const PixelFormatRow* FindPixelFormat(std::uint32_t code) {
    const auto row = std::ranges::find(kPixelFormats, code, &PixelFormatRow::code);
    return row == kPixelFormats.end() ? nullptr : &*row;
}
/// The name in any case; null for a name that is none.
inline const PixelFormatRow* FindPixelFormat(std::string_view name) {
    const auto row = std::ranges::find(kPixelFormats, UpperCase(name), &PixelFormatRow::name);
    return row == kPixelFormats.end() ? nullptr : &*row;
}

}  // namespace platform
