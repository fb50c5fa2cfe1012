// The codecs of the command language, one row each: what commands call them, what files and players
// call them, what they can do, and what encodes them here. Everything else that must know a codec
// reads it from its row.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>

#include "platform/encoder.h"

namespace platform {

/// The rate-control modes that a codec has.
class VbrModes {
  public:
    constexpr VbrModes(std::initializer_list<VbrMode> modes) {
        for (const VbrMode mode : modes) bits_ |= Bit(mode);
    }
    constexpr bool Has(VbrMode mode) const { return (bits_ & Bit(mode)) != 0; }

  private:
    static constexpr unsigned Bit(VbrMode mode) { return 1U << static_cast<unsigned>(mode); }
    unsigned bits_ = 0;
};

/// What makes a codec's stream.
struct CodecMaker {
    enum class Kind : std::uint8_t {
        Library,       // libavcodec's encoder called `name`
        FullFrames,    // nothing codes: frames as they are
        Pcm,           // nothing codes: samples as they are
        Wmv9,          // our own encoder of Windows Media Video 9
        Screen,        // our own encoder of Windows Media Video 9 Screen
        Wma,           // our own encoder of Windows Media Audio 9
        Professional,  // our own encoder of Windows Media Audio 9 Professional
        Lossless,      // our own encoder of Windows Media Audio 9 Lossless
        Voice,         // our own encoder of Windows Media Audio 9 Voice
    };
    Kind kind;
    std::string_view name = {};
};

/// A codec's place in its table is its index in every rate-control mode.
struct AudioCodecRow {
    std::string_view short_name;  // as commands name it
    std::uint16_t tag;            // wave format tag as the language knows it; 0 = uncompressed
    std::string_view name;        // as a player shows it
    VbrModes modes;
    bool several_depths;  // formats differ in their bits per sample too, so "-a_setting" has them
    CodecMaker maker;
};

struct VideoCodecRow {
    std::string_view short_name;  // as commands name it
    std::uint32_t four_cc;        // 0 = uncompressed
    std::string_view name;        // as a player shows it
    VbrModes modes;
    CodecMaker maker;
    bool even_width;   // its encoder takes no odd width ...
    bool even_height;  // ... or height
    bool fields;       // its encoder codes interlaced pictures
};

inline constexpr VbrModes kAllVbrModes = {VbrMode::Constant, VbrMode::Peak, VbrMode::Quality,
                                          VbrMode::BitRate};

// clang-format off
inline constexpr auto kAudioCodecs = std::to_array<AudioCodecRow>({
    // short name tag    name                                  modes                several depths  maker
    {"WMA9STD",   0x161, "Windows Media Audio 9",              kAllVbrModes,        false, {CodecMaker::Kind::Wma}},
    {"WMA9PRO",   0x162, "Windows Media Audio 9 Professional", kAllVbrModes,        true,  {CodecMaker::Kind::Professional}},
    {"WMA9LSL",   0x163, "Windows Media Audio 9 Lossless",     {VbrMode::Quality},  true,  {CodecMaker::Kind::Lossless}},
    {"WMSP9",     0x00A, "Windows Media Audio 9 Voice",        {VbrMode::Constant}, false, {CodecMaker::Kind::Voice}},
    {"PCM",       0,     "PCM",                                {VbrMode::Constant}, false, {CodecMaker::Kind::Pcm}},
});

inline constexpr auto kVideoCodecs = std::to_array<VideoCodecRow>({
    // short name four_cc         name                            modes                maker                                   even_width even_height fields
    {"WMV7",      FourCC("WMV1"), "Windows Media Video 7",        kAllVbrModes,        {CodecMaker::Kind::Library, "wmv1"},    true,      false,      false},
    {"WMV8",      FourCC("WMV2"), "Windows Media Video 8",        kAllVbrModes,        {CodecMaker::Kind::Library, "wmv2"},    true,      false,      false},
    {"WMV9",      FourCC("WMV3"), "Windows Media Video 9",        kAllVbrModes,        {CodecMaker::Kind::Wmv9},               true,      true,       false},
    {"WMS9",      FourCC("MSS2"), "Windows Media Video 9 Screen", kAllVbrModes,        {CodecMaker::Kind::Screen},             false,     false,      false},
    {"MP41",      FourCC("MP4S"), "ISO MPEG-4 Video v1",          kAllVbrModes,        {CodecMaker::Kind::Library, "mpeg4"},   false,     false,      true},
    {"UNCOMP",    0,              "Full frames (uncompressed)",   {VbrMode::Constant}, {CodecMaker::Kind::FullFrames},         false,     false,      false},
});
// clang-format on

/// The short names of a table, in its order: the words that a command may name a codec with.
template <typename Row, std::size_t count>
constexpr std::array<std::string_view, count> ShortNames(const std::array<Row, count>& table) {
    std::array<std::string_view, count> names;
    std::ranges::transform(table, names.begin(), &Row::short_name);
    return names;
}
inline constexpr auto kAudioCodecNames = ShortNames(kAudioCodecs);
inline constexpr auto kVideoCodecNames = ShortNames(kVideoCodecs);

/// The first row whose `field` is `value`; null when there is none.
template <typename Row, std::size_t count, typename Field, typename Value>
constexpr const Row* FindRow(const std::array<Row, count>& table, Field Row::*field,
                             const Value& value) {
    const auto row = std::ranges::find(table, value, field);
    return row == table.end() ? nullptr : &*row;
}
constexpr const AudioCodecRow* FindAudioCodec(std::string_view short_name) {
    return FindRow(kAudioCodecs, &AudioCodecRow::short_name, short_name);
}
constexpr const AudioCodecRow* FindAudioCodec(std::uint32_t tag) {
    return FindRow(kAudioCodecs, &AudioCodecRow::tag, tag);
}
constexpr const VideoCodecRow* FindVideoCodec(std::string_view short_name) {
    return FindRow(kVideoCodecs, &VideoCodecRow::short_name, short_name);
}
constexpr const VideoCodecRow* FindVideoCodec(std::uint32_t four_cc) {
    return FindRow(kVideoCodecs, &VideoCodecRow::four_cc, four_cc);
}

/// How many codecs a mode lists: those up to the last that has it, since places hold in all modes.
template <typename Row, std::size_t count>
constexpr int CodecCount(const std::array<Row, count>& table, VbrMode mode) {
    int listed = 0;
    for (std::size_t i = 0; i < count; ++i)
        if (table[i].modes.Has(mode)) listed = static_cast<int>(i) + 1;
    return listed;
}

}  // namespace platform
