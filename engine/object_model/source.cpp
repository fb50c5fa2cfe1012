#include "engine/object_model/source.h"

#include <algorithm>

#include <fmt/format.h>

#include "engine/object_model/capture_input.h"
#include "engine/sources/screen/named_area.h"

namespace engine {

namespace {

using platform::SourceType;

std::int32_t WholeMilliseconds(Ticks duration) {
    return static_cast<std::int32_t>(
        std::min<std::int64_t>(duration.Milliseconds(), kNoUpperLimit));
}

}  // namespace

SourceInput OpenFileInput(const EngineParts& parts, const std::string& path) {
    if (path.empty()) RefuseArgument("The source has no name: give a media file");
    SourceInput opened{path, "", parts.files->GetAbsolutePathName(path), {}, {}};
    opened.media = parts.probe(opened.host_path);
    return opened;
}

SourceInput OpenInput(const EngineParts& parts, SourceType type, const std::string& input,
                      const std::string& scheme, const std::string& area) {
    if (scheme == "device" || scheme == "screencap") {
        if (input.empty())
            RefuseArgument(fmt::format("The source of the scheme \"{}\" has no name", scheme));
        return {input, scheme, "", {}, CaptureOf(parts, type, input, scheme, area), area};
    }
    if (!scheme.empty())
        RefuseArgument(
            fmt::format("\"{}\" is no source scheme: give none for a file, \"device\" or "
                        "\"screencap\"",
                        scheme));
    SourceInput opened = OpenFileInput(parts, input);
    const bool has_stream = type == SourceType::Audio ? opened.media->audio.has_value()
                                                      : opened.media->video.has_value();
    if (!has_stream)
        throw platform::Error(platform::kInvalidData,
                              fmt::format("{} has no {}", opened.host_path,
                                          type == SourceType::Audio ? "sound" : "picture"));
    return opened;
}

std::int32_t AudioSource::Duration() const {
    const SourceInput& input = state_.input;
    return input.IsFile() ? WholeMilliseconds(input.media->audio->duration) : 0;
}

void AudioSource::SetContentMode(std::int32_t mode) {
    state_.content_mode = InRange(ranges::kContentMode, mode);
}

std::int32_t VideoSource::Duration() const {
    if (state_.IsStill()) return state_.still_duration_ms;
    return state_.input.IsFile() ? WholeMilliseconds(state_.input.media->video->duration) : 0;
}

void VideoSource::SetOptimization(std::int32_t optimization) {
    state_.optimization = InRange(ranges::kOptimization, optimization);
}
void VideoSource::SetPixelAspectRatioX(std::int32_t x) {
    state_.pixel_aspect_x = InRange(ranges::kPixelAspectRatioX, x);
}
void VideoSource::SetPixelAspectRatioY(std::int32_t y) {
    state_.pixel_aspect_y = InRange(ranges::kPixelAspectRatioY, y);
}
void VideoSource::SetCroppingLeftMargin(std::int32_t pixels) {
    state_.left_margin = InRange(ranges::kCroppingLeftMargin, pixels);
}
void VideoSource::SetCroppingRightMargin(std::int32_t pixels) {
    state_.right_margin = InRange(ranges::kCroppingRightMargin, pixels);
}
void VideoSource::SetCroppingTopMargin(std::int32_t pixels) {
    state_.top_margin = InRange(ranges::kCroppingTopMargin, pixels);
}
void VideoSource::SetCroppingBottomMargin(std::int32_t pixels) {
    state_.bottom_margin = InRange(ranges::kCroppingBottomMargin, pixels);
}
void VideoSource::SetCaptureRate(std::int32_t thousandths) {
    state_.capture_rate = InRange(ranges::kCaptureRate, thousandths);
}
std::string VideoSource::CaptureArea() const {
    const std::optional<CaptureInput>& capture = state_.input.capture;
    const bool screen = capture && capture->device.kind == DeviceKind::Screen;
    return screen ? Describe(capture->area) : std::string();
}
void VideoSource::SetStillDuration(std::int32_t milliseconds) {
    state_.still_duration_ms = InRange(ranges::kStillDuration, milliseconds);
}

}  // namespace engine
