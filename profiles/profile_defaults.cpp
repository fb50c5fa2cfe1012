#include "profiles/profile_defaults.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/text.h"
#include "profiles/whole_number.h"

namespace profiles {

namespace {

using cli::EncodeSettings;

struct NumberDefault {
    std::optional<std::int32_t> EncodeSettings::*setting;
    std::int32_t value;
};

// clang-format off
constexpr auto kNumberDefaults = std::to_array<NumberDefault>({
    {&EncodeSettings::a_mode,       0},
    {&EncodeSettings::a_peakbuffer, 3000},    // milliseconds
    {&EncodeSettings::v_mode,       0},
    {&EncodeSettings::v_bitrate,    250000},  // bits per second
    {&EncodeSettings::v_width,      0},       // the source's
    {&EncodeSettings::v_height,     0},       // the source's
    {&EncodeSettings::v_keydist,    10000},   // milliseconds
    {&EncodeSettings::v_buffer,     5000},    // milliseconds
    {&EncodeSettings::v_peakbuffer, 5000},    // milliseconds
});

constexpr std::optional<std::int32_t> kAnyMode;
constexpr std::string_view kAnyCodec;

struct FormatDefault {
    std::optional<std::int32_t> mode;
    std::string_view codec;
    std::string_view setting;
};

// The first row that fits counts.
constexpr auto kFormatDefaults = std::to_array<FormatDefault>({
    // a_mode    a_codec    a_setting
    {2,          "WMA9PRO", "Q75_44_2_24"},
    {2,          "WMA9LSL", "Q100_44_2_16"},
    {2,          kAnyCodec, "Q75_44_2"},
    {0,          "WMSP9",   "12_16_1"},
    {0,          "PCM",     "705_22_2"},
    {kAnyMode,   "WMA9PRO", "128_44_2_24"},
    {kAnyMode,   kAnyCodec, "64_44_2"},
});
// clang-format on

std::string DefaultFormat(std::int32_t mode, std::string_view codec) {
    const auto row = std::ranges::find_if(kFormatDefaults, [&](const FormatDefault& candidate) {
        return (candidate.mode == kAnyMode || candidate.mode == mode) &&
               (candidate.codec == kAnyCodec || candidate.codec == codec);
    });
    return std::string(row->setting);
}

/// A bit depth that is typed asks for the codec that takes one.
bool AsksForProfessionalCodec(std::string_view format) {
    return platform::Split(format, '_').size() == 4 && !platform::StartsWith(format, "Q100");
}

}  // namespace

void LoadProfileDefaults(EncodeSettings& settings) {
    if (AsksForProfessionalCodec(settings.a_setting)) settings.a_codec = "WMA9PRO";
    if (settings.a_codec.empty()) settings.a_codec = "WMA9STD";
    if (settings.v_codec.empty()) settings.v_codec = "WMV9";
    for (const NumberDefault& number : kNumberDefaults)
        if (!(settings.*number.setting)) settings.*number.setting = number.value;
    if (settings.a_setting.empty())
        settings.a_setting = DefaultFormat(*settings.a_mode, settings.a_codec);
    if (!settings.v_peakbitrate) settings.v_peakbitrate = DefaultPeak(*settings.v_bitrate);
    if (!settings.v_quality) settings.v_quality = settings.v_mode == 2 ? 95 : 75;
}

}  // namespace profiles
