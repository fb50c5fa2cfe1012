#include "profiles/custom_audio.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <optional>
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

constexpr std::int32_t kHalfOf1411 = 705;  // cut instead of rounded

/// The rate that rounds to these kilobits or kilohertz.
template <typename Values>
std::int64_t Exact(const Values& values, std::int32_t thousands) {
    const auto rounded = std::ranges::find_if(values, [&](std::int64_t value) {
        return platform::RoundHalfToEven(static_cast<double>(value) / 1000) == thousands;
    });
    return rounded == values.end() ? std::int64_t{thousands} * 1000 : *rounded;
}

std::int64_t ExactBitRate(std::int32_t kilobits) {
    return kilobits == kHalfOf1411 ? 705600 : Exact(kBitRates, kilobits);
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
    pane.OutputError(fmt::format("Invalid {} {}", what, value));
    return false;
}

void SetPeak(const cli::EncodeSettings& settings, platform::WMEncAudience& audience,
             std::int64_t bit_rate) {
    if (settings.a_peakbuffer) audience.SetAudioBufferMax(0, *settings.a_peakbuffer);
    // The rate is judged afterwards, with a line of its own: no peak of it may be an error before.
    constexpr double kMost = std::numeric_limits<std::int32_t>::max();
    audience.SetAudioPeakBitrate(
        0, settings.a_peakbitrate
               ? *settings.a_peakbitrate
               : WholeNumber(std::min(DefaultPeak(static_cast<double>(bit_rate)), kMost),
                             "audio peak bit rate"));
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

    const std::int64_t rate = by_quality ? std::int64_t{fields->rate} : ExactBitRate(fields->rate);
    if (state.g_objProfile->VBRMode(SourceType::Audio, 0) == VbrMode::Peak)
        SetPeak(settings, audience, rate);
    const std::int64_t sampling_rate = Exact(kSamplingRates, fields->sampling_rate);

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
        pane.OutputError("Invalid -a_mode <mode_number>");
        return false;
    }
    if (!settings.a_codec.empty()) SetAudioCodec(state, audience, settings.a_codec);
    if (settings.a_setting.empty()) return true;
    const bool set = SetFormat(state, settings, pane, audience);
    // A quality has changed the mode, on which the name depends.
    if (!settings.a_codec.empty())
        state.AudioCodecName = state.g_objProfile->EnumAudioCodec(audience.AudioCodec(0));
    return set;
}

}  // namespace profiles
