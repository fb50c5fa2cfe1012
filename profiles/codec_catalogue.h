// The codecs and pixel formats of the command language: short names, and what the encoder calls
// them. Positions in the encoder's own lists differ from machine to machine; these do not.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/encoder.h"

namespace profiles {

/// A short name and the number behind it: a wave format tag, a FourCC, a pixel format.
struct CatalogueRow {
    std::string_view name;
    std::uint32_t value;
};

// clang-format off
/// Short name, wave format tag.
inline constexpr std::array kAudioCodecs = {
    CatalogueRow{"WMA9STD", 0x0161},
    CatalogueRow{"WMA9PRO", 0x0162},
    CatalogueRow{"WMA9LSL", 0x0163},
    CatalogueRow{"WMSP9",   0x000A},
    CatalogueRow{"PCM",     0},
};

/// Short name, FourCC.
inline constexpr std::array kVideoCodecs = {
    CatalogueRow{"WMV7",   platform::FourCC("WMV1")},
    CatalogueRow{"WMV8",   platform::FourCC("WMV2")},
    CatalogueRow{"WMV9",   platform::FourCC("WMV3")},
    CatalogueRow{"WMS9",   platform::FourCC("MSS2")},
    CatalogueRow{"MP41",   platform::FourCC("MP4S")},
    CatalogueRow{"UNCOMP", 0},
};

/// Name, FourCC or (RGB) the first word of the DirectShow media-subtype GUID.
inline constexpr std::array kPixelFormats = {
    CatalogueRow{"IYUV",   platform::FourCC("IYUV")},
    CatalogueRow{"I420",   platform::FourCC("I420")},
    CatalogueRow{"YV12",   platform::FourCC("YV12")},
    CatalogueRow{"YUY2",   platform::FourCC("YUY2")},
    CatalogueRow{"UYVY",   platform::FourCC("UYVY")},
    CatalogueRow{"YVYU",   platform::FourCC("YVYU")},
    CatalogueRow{"YVU9",   platform::FourCC("YVU9")},
    CatalogueRow{"RGB24",  0xE436EB7D},
    CatalogueRow{"RGB32",  0xE436EB7E},
    CatalogueRow{"RGB555", 0xE436EB7C},
    CatalogueRow{"RGB565", 0xE436EB7B},
    CatalogueRow{"RGB8",   0xE436EB7A},
};
// clang-format on

/// The short name of a format tag; empty when the catalogue has none.
std::string_view AudioShortName(std::uint32_t tag);
/// The short name of a FourCC; empty when the catalogue has none.
std::string_view VideoShortName(std::uint32_t four_cc);

/// The encoder's value of a pixel format, its name in any case.
std::optional<std::uint32_t> FindPixelFormat(std::string_view name);

/// What the listings print above the codecs of a rate-control mode.
std::string_view ModeCaption(platform::VbrMode mode);

/// The codec's index in the encoder's list. An unknown name means "WMA9STD", "WMV9". Throws
/// platform::Error when `profile` does not list the codec.
std::int32_t GetAudioCodecIndex(const platform::WMEncProfile2& profile, std::string_view name);
std::int32_t GetVideoCodecIndex(const platform::WMEncProfile2& profile, std::string_view name);

}  // namespace profiles
