#include "app/progress.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <string>

#include "platform/error.h"
#include "platform/text.h"

namespace app {

namespace {

constexpr std::string_view kScreenProfiles = "scrn";
constexpr double kThousand = 1000.0;
constexpr double kNoDuration = -1;  // as the label has always shown it

/// The nearest 16-bit number, halves to the even neighbour; none past 16 bits.
std::optional<std::int16_t> ToInt16(double value) {
    const double rounded = platform::RoundHalfToEven(value);
    using Limits = std::numeric_limits<std::int16_t>;
    if (rounded < Limits::min() || rounded > Limits::max()) return std::nullopt;
    return static_cast<std::int16_t>(rounded);
}

std::int32_t ToInt32(double value) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(
        std::clamp<double>(platform::RoundHalfToEven(value), Limits::min(), Limits::max()));
}

/// A label of two lines: caption above, number and unit below. A number past 16 bits leaves the
/// label as it is.
void ShowNumber(platform::Label& label, const std::string& caption, double value,
                const std::string& unit) {
    if (const auto number = ToInt16(value))
        label.SetCaption(caption + "\r\n" + platform::NumberText(*number) + unit);
}

/// Milliseconds of the source between its marks; 0 without a source.
std::int64_t SourceLength(const platform::WMEncSource* source) {
    if (source == nullptr) return 0;
    const std::int32_t end = source->MarkOut() != 0 ? source->MarkOut() : source->Duration();
    return std::int64_t{end} - source->MarkIn();
}

bool AsksForTwoPasses(const platform::WMEncSource* source) {
    return source != nullptr && source->PreProcessPass() == 1;
}

}  // namespace

void Progress::setupProgressBar() {
    const platform::WMEncSource* const audio = session_.g_objSrcAud.get();
    const platform::WMEncSource* const video = session_.g_objSrcVid.get();

    g_nCaptureSeconds = 0;
    window_.pb1().SetMax(100);
    window_.pb1().SetMin(0);
    window_.pb1().SetValue(0);
    g_nCurrentPass = 1;
    window_.lblFile().SetCaption("  Encoding: " + settings_.input);

    const std::int64_t length_ms = std::max(SourceLength(audio), SourceLength(video));
    if (!settings_.input.empty()) settings_.duration = static_cast<double>(length_ms) / kThousand;
    window_.lblETm().SetCaption(
        "Media Length: " + platform::NumberText(settings_.duration.value_or(kNoDuration)) +
        " secs");
    g_nTotalPasses = AsksForTwoPasses(audio) || AsksForTwoPasses(video) ? 2 : 1;
}

void Progress::Clear() {
    g_nCaptureSeconds = 0;
    g_nCurrentPass = 1;
    g_nTotalPasses = 1;
    window_.pb1().SetValue(window_.pb1().Min());
    for (platform::Label* label : {&window_.lblprgs(), &window_.lblFile(), &window_.lblETm(),
                                   &window_.Label1(), &window_.Label2(), &window_.Label3()})
        label->SetCaption("");
}

void Progress::Tick() {
    if (!session_.g_objEncoder) return;
    try {
        platform::WMEncStatistics& statistics = session_.g_objEncoder->Statistics();
        ShowRates(statistics);
        const std::int32_t length_s = ToInt32(settings_.duration.value_or(kNoDuration));
        if (length_s > 0) ShowPercent(statistics, length_s);
        if (IsCapture()) CountCaptureSecond();
    } catch (const platform::Error&) {
        // A line a second would bury the pane; a run that is really broken says so by its events.
    }
}

void Progress::ShowFigures() {
    if (!session_.g_objEncoder) return;
    platform::ErrorTrap trap;
    trap([&] { ShowRates(session_.g_objEncoder->Statistics()); });
}

void Progress::ShowRates(platform::WMEncStatistics& statistics) {
    const double elapsed_ms = static_cast<double>(statistics.EncodingTime().Raw());
    ShowNumber(window_.Label1(), "Elapsed time: ", elapsed_ms / kThousand, " secs");
    const platform::OutputStats output = statistics.WMFOutputStats();
    ShowNumber(window_.Label2(), "Expected bit rate: ", output.expected_bit_rate_bps / kThousand,
               " Kbps");
    ShowNumber(window_.Label3(), "Current bit rate: ", output.current_bit_rate_bps / kThousand,
               " Kbps");
}

void Progress::ShowPercent(platform::WMEncStatistics& statistics, std::int32_t length_s) {
    const std::int64_t elapsed_ms = statistics.EncodingTime().Raw();
    const std::int64_t whole_percent = elapsed_ms * 100 / length_s / 1000;
    const auto percent = static_cast<float>(whole_percent);
    platform::ProgressBar& bar = window_.pb1();
    if (bar.Value() > percent) {  // a bar that goes back is the next pass
        ++g_nCurrentPass;
        window_.lblStatus().SetCaption("Running... Pass:  " + platform::NumberText(g_nCurrentPass) +
                                       " / " + platform::NumberText(g_nTotalPasses));
    }
    bar.SetValue(std::min(percent, bar.Max()));
    window_.lblprgs().SetCaption(platform::NumberText(bar.Value()) + "%");
}

// A capture has no end of its own.
bool Progress::IsCapture() const {
    if (platform::StartsWith(platform::LowerCase(settings_.profile), kScreenProfiles)) return true;
    return settings_.device_input && settings_.input.empty();
}

void Progress::CountCaptureSecond() {
    if (session_.g_objEncoder->RunState() == platform::EncoderState::Paused) return;
    ++g_nCaptureSeconds;
    if (!settings_.duration || g_nCaptureSeconds < *settings_.duration) return;  // none: until Stop
    g_nCaptureSeconds = 0;
    session_.g_objEncoder->Stop();
    window_.Timer1().SetInterval(0);
    window_.Timer1().SetEnabled(false);
}

}  // namespace app
