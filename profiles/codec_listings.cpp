#include "profiles/codec_listings.h"

#include <fmt/format.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/codec_table.h"
#include "platform/text.h"
#include "profiles/codec_catalogue.h"

namespace profiles {

namespace {

using platform::PadSpaces;
using platform::SourceType;
using platform::VbrMode;

constexpr std::array kModes = {VbrMode::Constant, VbrMode::Peak, VbrMode::Quality,
                               VbrMode::BitRate};
constexpr std::string_view kLineBreak = "\r\n";

constexpr std::size_t kArgumentWidth = 24;
constexpr std::size_t kRateWidth = 16;
constexpr std::size_t kSamplingRateWidth = 20;
constexpr std::size_t kChannelWidth = 10;
constexpr std::size_t kRuleWidth = 84;

/// One medium of the codec listings.
struct CodecList {
    std::string_view heading;
    SourceType type;
    int (platform::WMEncProfile2::*count)() const;
    std::string (platform::WMEncProfile2::*name)(int) const;
    std::string_view (*short_name)(std::uint32_t code);  // empty = not of the command language
};

template <typename Row>
std::string_view ShortName(const Row* row) {
    return row == nullptr ? std::string_view() : row->short_name;
}

constexpr CodecList kAudioList = {
    "Audio Codecs: ", SourceType::Audio, &platform::WMEncProfile2::AudioCodecCount,
    &platform::WMEncProfile2::EnumAudioCodec,
    [](std::uint32_t tag) { return ShortName(platform::FindAudioCodec(tag)); }};
constexpr CodecList kVideoList = {
    "Video Codecs: ", SourceType::Video, &platform::WMEncProfile2::VideoCodecCount,
    &platform::WMEncProfile2::EnumVideoCodec,
    [](std::uint32_t four_cc) { return ShortName(platform::FindVideoCodec(four_cc)); }};

void ListCodecs(const CodecList& list, platform::Factory& factory, platform::OutputPane& pane) {
    const auto profile = factory.MakeProfile();
    pane.OutputInfo(fmt::format("{}{}", kLineBreak, list.heading));
    for (const VbrMode mode : kModes) {
        profile->SetVBRMode(list.type, 0, mode);
        pane.OutputInfo(std::string(ModeCaption(mode)));
        int number = 1;
        const int count = ((*profile).*list.count)();
        for (int codec = 0; codec < count; ++codec) {
            const std::string name = ((*profile).*list.name)(codec);
            const std::string_view short_name =
                list.short_name(profile->GetCodecFourCCFromIndex(list.type, codec));
            if (short_name.empty()) continue;
            pane.OutputInfo(fmt::format("\t[{}] {} : {}", number, short_name, name));
            ++number;
        }
        pane.OutputInfo(std::string(kLineBreak));
    }
}

/// Thousandth part of a rate as a whole number, halves to even: 44100 gives 44.
std::string Thousands(std::int32_t rate) {
    return fmt::format("{:.0f}", platform::RoundHalfToEven(rate / 1000.0));
}

/// Prints the formats of one codec in one mode.
class FormatTable {
  public:
    FormatTable(platform::OutputPane& pane, VbrMode mode, bool with_bits)
        : pane_(pane), by_quality_(mode == VbrMode::Quality), with_bits_(with_bits) {}

    void Heading() {
        Row("Argument", by_quality_ ? "Quality" : "Bitrate", "Sampling rate", "Channel",
            "BitsPerSample");
        pane_.OutputInfo("\t\t" + std::string(kRuleWidth, '-'));
    }

    void Format(const platform::WMEncProfile2& profile, int codec, int format) {
        std::int32_t sampling_rate = 0;
        std::int32_t channels = 0;
        std::int32_t bits = 0;
        const std::int32_t value =
            profile.EnumAudioFormat(codec, format, sampling_rate, channels, bits);
        const std::string rate = by_quality_ ? fmt::format("Q{}", value) : Thousands(value);
        const std::string sampling = Thousands(sampling_rate);
        std::string argument = fmt::format("{}_{}_{}", rate, sampling, channels);
        if (with_bits_) argument += fmt::format("_{}", bits);
        Row(argument, rate, sampling, std::to_string(channels), std::to_string(bits));
    }

  private:
    void Row(std::string_view argument, std::string_view rate, std::string_view sampling_rate,
             std::string_view channels, std::string_view bits) {
        const std::string last = with_bits_
                                     ? fmt::format("{}{}", PadSpaces(channels, kChannelWidth), bits)
                                     : std::string(channels);
        pane_.OutputInfo(fmt::format("\t\t{}{}{}{}", PadSpaces(argument, kArgumentWidth),
                                     PadSpaces(rate, kRateWidth),
                                     PadSpaces(sampling_rate, kSamplingRateWidth), last));
    }

    platform::OutputPane& pane_;
    bool by_quality_;
    bool with_bits_;
};

}  // namespace

void ListAudioCodecs(platform::Factory& factory, platform::OutputPane& pane) {
    ListCodecs(kAudioList, factory, pane);
}

void ListVideoCodecs(platform::Factory& factory, platform::OutputPane& pane) {
    ListCodecs(kVideoList, factory, pane);
}

void ListAudioFormats(platform::Factory& factory, platform::OutputPane& pane) {
    const auto profile = factory.MakeProfile();
    pane.OutputInfo(fmt::format("{}{}", kLineBreak, kAudioList.heading));
    // A codec that the catalogue does not know is listed under the name of the one before it,
    // whichever mode that was in.
    const platform::AudioCodecRow* row = nullptr;
    for (const VbrMode mode : kModes) {
        profile->SetVBRMode(SourceType::Audio, 0, mode);
        pane.OutputInfo(std::string(ModeCaption(mode)));
        const int codec_count = profile->AudioCodecCount();
        for (int codec = 0; codec < codec_count; ++codec) {
            const std::string name = profile->EnumAudioCodec(codec);
            const platform::AudioCodecRow* const known = platform::FindAudioCodec(
                profile->GetCodecFourCCFromIndex(SourceType::Audio, codec));
            if (known != nullptr) row = known;
            pane.OutputInfo(row == nullptr ? fmt::format("\t{}:", name)
                                           : fmt::format("\t{} : {} ({}):", row->short_name, name,
                                                         row->short_name));
            pane.OutputInfo(std::string(kLineBreak));

            FormatTable table(pane, mode, row != nullptr && row->several_depths);
            table.Heading();
            const int format_count = profile->AudioFormatCount(codec);
            for (int format = 0; format < format_count; ++format)
                table.Format(*profile, codec, format);
            pane.OutputInfo("");
        }
        pane.OutputInfo(std::string(kLineBreak));
    }
}

}  // namespace profiles
