// Codecs and pixel formats by the words of the command language. Positions in the encoder's own
// lists differ from machine to machine; words do not.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/codec_table.h"
#include "platform/encoder.h"

namespace profiles {

/// A pixel format's name and the number behind it.
struct PixelFormatRow {
    std::string_view name;
    std::uint32_t value;
};

// clang-format off
/// Name, FourCC or (RGB) the first word of the DirectShow media-subtype GUID.
inline constexpr std::array kPixelFormats = {
    PixelFormatRow{"IYUV",   platform::FourCC("IYUV")},
    PixelFormatRow{"I420",   platform::FourCC("I420")},
    PixelFormatRow{"YV12",   platform::FourCC("YV12")},
    PixelFormatRow{"YUY2",   platform::FourCC("YUY2")},
    PixelFormatRow{"UYVY",   platform::FourCC("UYVY")},
    PixelFormatRow{"YVYU",   platform::FourCC("YVYU")},
    PixelFormatRow{"YVU9",   platform::FourCC("YVU9")},
    PixelFormatRow{"RGB24",  0xE436EB7D},
    PixelFormatRow{"RGB32",  0xE436EB7E},
    PixelFormatRow{"RGB555", 0xE436EB7C},
    PixelFormatRow{"RGB565", 0xE436EB7B},
    PixelFormatRow{"RGB8",   0xE436EB7A},
};
// clang-format on

/// The encoder's value of a pixel format, its name in any case.
std::optional<std::uint32_t> FindPixelFormat(std::string_view name);

/// What the listings print above the codecs of a rate-control mode.
std::string_view ModeCaption(platform::VbrMode mode);

/// The codec's index in the encoder's list. An unknown name means "WMA9STD", "WMV9". Throws
/// platform::Error when `profile` does not list the codec.
std::int32_t GetAudioCodecIndex(const platform::WMEncProfile2& profile, std::string_view name);
std::int32_t GetVideoCodecIndex(const platform::WMEncProfile2& profile, std::string_view name);

}  // namespace profiles
