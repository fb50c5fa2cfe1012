#include "profiles/codec_catalogue.h"

#include <algorithm>
#include <span>
#include <string>

#include "platform/text.h"

namespace profiles {

namespace {

using Catalogue = std::span<const CatalogueRow>;

std::optional<std::uint32_t> ValueOf(Catalogue catalogue, std::string_view name) {
    const auto row = std::ranges::find(catalogue, name, &CatalogueRow::name);
    if (row == catalogue.end()) return std::nullopt;
    return row->value;
}

std::string_view NameOf(Catalogue catalogue, std::uint32_t value) {
    const auto row = std::ranges::find(catalogue, value, &CatalogueRow::value);
    return row == catalogue.end() ? std::string_view() : row->name;
}

}  // namespace

std::string_view AudioShortName(std::uint32_t tag) { return NameOf(kAudioCodecs, tag); }

std::string_view VideoShortName(std::uint32_t four_cc) { return NameOf(kVideoCodecs, four_cc); }

std::optional<std::uint32_t> FindPixelFormat(std::string_view name) {
    return ValueOf(kPixelFormats, platform::UpperCase(name));
}

std::string_view ModeCaption(platform::VbrMode mode) {
    switch (mode) {
        case platform::VbrMode::Constant:
            return "CBR Mode :";
        case platform::VbrMode::Peak:
            return "Peak Bit Rate-Based VBR Audio Mode :";
        case platform::VbrMode::Quality:
            return "Quality-Based VBR Audio Mode :";
        case platform::VbrMode::BitRate:
            return "Bit Rate-Based VBR Audio Mode :";
    }
    return "Unknown Mode";
}

std::int32_t GetAudioCodecIndex(const platform::WMEncProfile2& profile, std::string_view name) {
    constexpr std::uint32_t kStandard = 0x0161;
    return profile.GetCodecIndexFromFourCC(platform::SourceType::Audio,
                                           ValueOf(kAudioCodecs, name).value_or(kStandard));
}

std::int32_t GetVideoCodecIndex(const platform::WMEncProfile2& profile, std::string_view name) {
    constexpr std::uint32_t kVideo9 = platform::FourCC("WMV3");
    return profile.GetCodecIndexFromFourCC(platform::SourceType::Video,
                                           ValueOf(kVideoCodecs, name).value_or(kVideo9));
}

}  // namespace profiles
