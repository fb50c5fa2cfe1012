#include "profiles/custom_audio.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/value_readers.h"
#include "platform/text.h"
#include "profiles/audience_setup.h"
#include "profiles/encoding_mode.h"
#include "profiles/whole_number.h"

namespace profiles {

namespace {

using platform::SourceType;
using platform::VbrMode;

// clang-format off
constexpr auto kBitRates = std::to_array<std::int64_t>({
      4000,   5000,   6000,   8000,  10000,  12000,  16000,  17000,  20000,   22000,
     32000,  40000,  48000,  64000,  80000,  96000, 128000, 160000, 192000,  256000,
    320000, 352800, 384000, 440000, 640000, 705600, 768000, 1411200});
constexpr auto kSamplingRates = std::to_array<std::int64_t>({
    8000, 11025, 16000, 22050, 32000, 44100, 48000, 88200, 96000});
// clang-format on
constexpr std::array kChannels = {1, 2, 6, 8};
constexpr std::array kDepths = {16, 20, 24};

/// A short form that stands for more than its thousandfold.
struct ShortForm {
    std::int32_t thousands;
    std::int64_t exact;
};

constexpr auto kExactBitRates =
    std::to_array<ShortForm>({{1411, 1411200}, {705, 705600}, {353, 352800}});
constexpr auto kExactSamplingRates =
    std::to_array<ShortForm>({{88, 88200}, {44, 44100}, {22, 22050}, {11, 11025}});

std::int64_t Exact(std::span<const ShortForm> short_forms, std::int32_t thousands) {
    const auto row = std::ranges::find(short_forms, thousands, &ShortForm::thousands);
    return row == short_forms.end() ? std::int64_t{thousands} * 1000 : row->exact;
}

template <typename Values, typename Value>
bool Contains(const Values& values, Value value) {
    return std::ranges::find(values, value) != values.end();
}

constexpr std::size_t kFewestFields = 3;
constexpr std::size_t kMostFields = 4;
constexpr std::int32_t kDefaultDepth = 16;

/// The fields of an "-a_setting" as whole numbers.
struct FormatFields {
    std::int32_t rate;           // kilobits per second, or the quality
    std::int32_t sampling_rate;  // kilohertz
    std::int32_t channels;
    std::int32_t depth;
};

/// Nothing, after the reader's lines, when a field is no whole number. A field too few is read as
/// an empty one; fields too many are left alone.
std::optional<FormatFields> ReadFields(std::vector<std::string> texts, platform::OutputPane& pane) {
    if (texts.size() < kFewestFields) texts.emplace_back();
    texts.resize(std::min(texts.size(), kMostFields));

    cli::ValueReaders readers(pane);
    std::array<std::int32_t, kMostFields> values = {0, 0, 0, kDefaultDepth};
    std::ranges::transform(texts, values.begin(), [&](const std::string& text) {
        return readers.ConvertStringToInteger(text);
    });
    if (Contains(values, cli::kUnread)) return std::nullopt;
    return FormatFields{values[0], values[1], values[2], values[3]};
}

bool Refuse(platform::OutputPane& pane, std::string_view what, std::int64_t value) {
    pane.OutputInfo(fmt::format("Invalid {} {}", what, value));
    return false;
}

void SetPeak(const cli::EncodeSettings& settings, platform::WMEncAudience& audience,
             std::int64_t bit_rate) {
    if (settings.a_peakbuffer) audience.SetAudioBufferMax(0, *settings.a_peakbuffer);
    audience.SetAudioPeakBitrate(
        0, settings.a_peakbitrate
               ? *settings.a_peakbitrate
               : WholeNumber(DefaultPeak(static_cast<double>(bit_rate)), "audio peak bit rate"));
}

bool SetFormat(platform::SessionState& state, cli::EncodeSettings& settings,
               platform::OutputPane& pane, platform::WMEncAudience& audience) {
    std::vector<std::string> texts = platform::Split(settings.a_setting, '_');
    const bool by_quality = platform::StartsWith(platform::UpperCase(texts.front()), "Q");
    if (by_quality) {
        texts.front().erase(0, 1);
        settings.a_mode = 2;
        state.g_objProfile->SetVBRMode(SourceType::Audio, 0, VbrMode::Quality);
    }
    const std::optional<FormatFields> fields = ReadFields(std::move(texts), pane);
    if (!fields) return false;

    const std::int64_t rate =
        by_quality ? std::int64_t{fields->rate} : Exact(kExactBitRates, fields->rate);
    if (state.g_objProfile->VBRMode(SourceType::Audio, 0) == VbrMode::Peak)
        SetPeak(settings, audience, rate);
    const std::int64_t sampling_rate = Exact(kExactSamplingRates, fields->sampling_rate);

    if (!by_quality && !CheckForValidAudioBitRates(rate))
        return Refuse(pane, "audio bit rate", rate);
    if (!CheckForValidAudioSamplingRates(sampling_rate))
        return Refuse(pane, "audio sample rate", sampling_rate);
    if (!CheckForValidAudioChannel(fields->channels))
        return Refuse(pane, "audio channels", fields->channels);
    if (!CheckForValidDepth(fields->depth)) return Refuse(pane, "bits per sample", fields->depth);

    audience.SetAudioConfig(0, fields->channels, static_cast<std::int32_t>(sampling_rate),
                            static_cast<std::int32_t>(rate), fields->depth);
    return true;
}

}  // namespace

bool CheckForValidAudioBitRates(std::int64_t bits_per_second) {
    return Contains(kBitRates, bits_per_second);
}

bool CheckForValidAudioSamplingRates(std::int64_t hertz) { return Contains(kSamplingRates, hertz); }

bool CheckForValidAudioChannel(std::int32_t channels) { return Contains(kChannels, channels); }

bool CheckForValidDepth(std::int32_t bits) { return Contains(kDepths, bits); }

bool SetupCustomAudioProfile(platform::SessionState& state, cli::EncodeSettings& settings,
                             platform::OutputPane& pane, platform::WMEncAudience& audience) {
    if (!ApplyEncodingMode(settings.a_mode, *state.g_objProfile, *state.g_objSrcAud)) {
        pane.OutputInfo("Invalid -a_mode <mode_number>");
        return false;
    }
    if (!settings.a_codec.empty()) SetAudioCodec(state, audience, settings.a_codec);
    return settings.a_setting.empty() || SetFormat(state, settings, pane, audience);
}

}  // namespace profiles
