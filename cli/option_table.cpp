#include "cli/option_table.h"

#include <algorithm>

namespace cli {
namespace {

using Set = EncodeSettings;

// The field that a path of members leads to, for example v_clip and then its left.
template <auto... path>
auto& Field(EncodeSettings& settings) {
    // clang-format off
    return (settings .* ... .* path);
    // clang-format on
}

template <auto... path>
constexpr OptionValue TextOf(ValueKind kind, const TextRule* rule = nullptr) {
    return {.kind = kind,
            .store_text = [](EncodeSettings& settings,
                             const std::string& text) { Field<path...>(settings) = text; },
            .text_rule = rule};
}

template <auto... path>
constexpr OptionValue IntegerOf(ValueKind kind, std::int32_t fallback, std::int32_t factor,
                                const NumberRule* rule) {
    return {.kind = kind,
            .store_integer = [](EncodeSettings& settings,
                                std::int32_t number) { Field<path...>(settings) = number; },
            .fallback = fallback,
            .factor = factor,
            .number_rule = rule};
}

template <auto... path>
constexpr OptionValue Text() {
    return TextOf<path...>(ValueKind::Text);
}
template <auto... path>
constexpr OptionValue OptionalText() {
    return TextOf<path...>(ValueKind::OptionalText);
}
template <auto... path>
constexpr OptionValue UpperText() {
    return TextOf<path...>(ValueKind::UpperText);
}
template <auto... path>
constexpr OptionValue OneOf(const TextRule& rule) {
    return TextOf<path...>(ValueKind::UpperText, &rule);
}
template <auto... path>
constexpr OptionValue Integer() {
    return IntegerOf<path...>(ValueKind::Integer, 0, 1, nullptr);
}
template <auto... path>
constexpr OptionValue IntegerTimes(std::int32_t factor) {
    return IntegerOf<path...>(ValueKind::Integer, 0, factor, nullptr);
}
template <auto... path>
constexpr OptionValue IntegerOr(std::int32_t fallback) {
    return IntegerOf<path...>(ValueKind::OptionalInteger, fallback, 1, nullptr);
}
template <auto... path>
constexpr OptionValue IntegerIn(const NumberRule& rule) {
    return IntegerOf<path...>(ValueKind::Integer, 0, 1, &rule);
}
template <auto... path>
constexpr OptionValue EndMark() {
    return IntegerOf<path...>(ValueKind::EndMark, 0, 1, nullptr);
}
template <auto... path>
constexpr OptionValue FloatTimes(std::int32_t factor) {
    return {.kind = ValueKind::Float,
            .store_float = [](EncodeSettings& settings,
                              float number) { Field<path...>(settings) = number; },
            .factor = factor};
}

constexpr OptionValue kSaveName{.kind = ValueKind::SaveName};
constexpr OptionValue kLoadName{.kind = ValueKind::LoadName};
constexpr bool EncodeSettings::*kNoFlag = nullptr;

constexpr std::string_view kAudioCodecs[] = {"WMA9STD", "WMA9PRO", "WMA9LSL", "WMSP9", "PCM"};
constexpr std::string_view kVideoCodecs[] = {"WMV7", "WMV8", "WMV9", "WMS9", "MP41", "UNCOMP"};

constexpr TextRule kAudioCodecRule{kAudioCodecs, "Please enter correct audio codec index only"};
constexpr TextRule kVideoCodecRule{kVideoCodecs, "Please enter correct video codec index only"};

using Names = NumberRule::Names;

// clang-format off
//                              lowest highest step  line                             names
constexpr NumberRule kContent{     0,    2,     1, "Invalid range for parameter ", Names::Option};
constexpr NumberRule kPreproc{     0,   18,     1, "Invalid preproc value: ",      Names::Value};
constexpr NumberRule kPerformance{ 0,  100,    20, "",                             Names::Nothing};

constexpr Option kOptions[] = {
    // name             flag                  values
    {"-wme",            kNoFlag,              {Text<&Set::wme>()}},
    {"-input",          kNoFlag,              {Text<&Set::input>()}},
    {"-audioonly",      &Set::audioonly,      {}},
    {"-videoonly",      &Set::videoonly,      {}},
    {"-adevice",        &Set::device_input,   {IntegerOr<&Set::adevice>(0)}},
    {"-vdevice",        &Set::device_input,   {IntegerOr<&Set::vdevice>(0)}},
    {"-profile",        kNoFlag,              {Text<&Set::profile>()}},
    {"-a_mode",         kNoFlag,              {Integer<&Set::a_mode>()}},
    {"-a_codec",        kNoFlag,              {OneOf<&Set::a_codec>(kAudioCodecRule)}},
    {"-a_setting",      kNoFlag,              {Text<&Set::a_setting>()}},
    {"-a_peakbitrate",  kNoFlag,              {Integer<&Set::a_peakbitrate>()}},
    {"-a_peakbuffer",   kNoFlag,              {Integer<&Set::a_peakbuffer>()}},
    {"-a_content",      kNoFlag,              {IntegerIn<&Set::a_content>(kContent)}},
    {"-a_contentedl",   kNoFlag,              {Text<&Set::a_contentedl>()}},
    {"-a_folddown6to2", kNoFlag,              {Integer<&Set::a_folddown6to2, &FoldDownSettings::surround>(),
                                               Integer<&Set::a_folddown6to2, &FoldDownSettings::center>(),
                                               Integer<&Set::a_folddown6to2, &FoldDownSettings::lfe>()}},
    {"-v_mode",         kNoFlag,              {Integer<&Set::v_mode>()}},
    {"-v_codec",        kNoFlag,              {OneOf<&Set::v_codec>(kVideoCodecRule)}},
    {"-v_bitrate",      kNoFlag,              {Integer<&Set::v_bitrate>()}},
    {"-v_buffer",       kNoFlag,              {Integer<&Set::v_buffer>()}},
    {"-v_width",        kNoFlag,              {Integer<&Set::v_width>()}},
    {"-v_height",       kNoFlag,              {Integer<&Set::v_height>()}},
    {"-v_framerate",    kNoFlag,              {FloatTimes<&Set::v_framerate>(1000)}},
    {"-v_keydist",      kNoFlag,              {IntegerTimes<&Set::v_keydist>(1000)}},
    {"-v_quality",      kNoFlag,              {Integer<&Set::v_quality>()}},
    {"-v_peakbitrate",  kNoFlag,              {Integer<&Set::v_peakbitrate>()}},
    {"-v_peakbuffer",   kNoFlag,              {Integer<&Set::v_peakbuffer>()}},
    {"-v_performance",  kNoFlag,              {IntegerIn<&Set::v_performance>(kPerformance)}},
    {"-v_preproc",      kNoFlag,              {IntegerIn<&Set::v_preproc>(kPreproc)}},
    {"-pixelformat",    kNoFlag,              {Text<&Set::pixelformat>()}},
    {"-pixelratio",     kNoFlag,              {Integer<&Set::pixelratio, &PixelRatioSettings::x>(),
                                               Integer<&Set::pixelratio, &PixelRatioSettings::y>()}},
    {"-v_clip",         kNoFlag,              {Integer<&Set::v_clip, &ClipSettings::left>(),
                                               Integer<&Set::v_clip, &ClipSettings::top>(),
                                               Integer<&Set::v_clip, &ClipSettings::right>(),
                                               Integer<&Set::v_clip, &ClipSettings::bottom>()}},
    {"-v_profile",      kNoFlag,              {UpperText<&Set::v_profile>()}},
    {"-output",         kNoFlag,              {Text<&Set::output>()}},
    {"-outputstring",   kNoFlag,              {Text<&Set::outputstring>()}},
    {"-broadcast",      kNoFlag,              {IntegerOr<&Set::broadcast>(8080)}},
    {"-push",           kNoFlag,              {Text<&Set::push, &PushSettings::server_name>(),
                                               Text<&Set::push, &PushSettings::publishing_point>(),
                                               OptionalText<&Set::push, &PushSettings::template_name>()}},
    {"-time",           kNoFlag,              {Integer<&Set::time, &TimeSettings::start>(),
                                               EndMark<&Set::time, &TimeSettings::end>()}},
    {"-duration",       &Set::duration_typed, {Integer<&Set::duration>()}},
    {"-silent",         &Set::silent,         {}},
    {"-title",          kNoFlag,              {Text<&Set::title>()}},
    {"-author",         kNoFlag,              {Text<&Set::author>()}},
    {"-copyright",      kNoFlag,              {Text<&Set::copyright>()}},
    {"-description",    kNoFlag,              {Text<&Set::description>()}},
    {"-rating",         kNoFlag,              {Text<&Set::rating>()}},
    {"-saveprofile",    kNoFlag,              {Text<&Set::saveprofile>()}},
    {"-loadprofile",    kNoFlag,              {Text<&Set::loadprofile>()}},
    {"-verbose",        kNoFlag,              {Integer<&Set::verbose>()}},
    {"-s_config",       kNoFlag,              {kSaveName}},
    {"-config",         kNoFlag,              {kLoadName}},
    {"-maxpacket",      kNoFlag,              {Integer<&Set::maxpacket>()}},
    {"-minpacket",      kNoFlag,              {Integer<&Set::minpacket>()}},
};
// clang-format on

}  // namespace

std::span<const Option> Options() { return kOptions; }

const Option* FindOption(std::string_view lower_case_word) {
    const Option* const row = std::find_if(
        std::begin(kOptions), std::end(kOptions),
        [lower_case_word](const Option& option) { return option.name == lower_case_word; });
    return row == std::end(kOptions) ? nullptr : row;
}

}  // namespace cli
