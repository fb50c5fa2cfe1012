#include "profiles/codec_catalogue.h"

#include <string>

namespace profiles {

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
    const platform::AudioCodecRow* row = platform::FindAudioCodec(name);
    if (row == nullptr) row = platform::FindAudioCodec("WMA9STD");
    return profile.GetCodecIndexFromFourCC(platform::SourceType::Audio, row->tag);
}

std::int32_t GetVideoCodecIndex(const platform::WMEncProfile2& profile, std::string_view name) {
    const platform::VideoCodecRow* row = platform::FindVideoCodec(name);
    if (row == nullptr) row = platform::FindVideoCodec("WMV9");
    return profile.GetCodecIndexFromFourCC(platform::SourceType::Video, row->four_cc);
}

}  // namespace profiles
