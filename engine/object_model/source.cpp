#include "engine/object_model/source.h"

#include <algorithm>

#include <fmt/format.h>

#include "engine/object_model/capture_input.h"

namespace engine {

namespace {

using platform::SourceType;

constexpr std::int32_t kMostPixels = 16384;
constexpr std::int32_t kMostAspect = 65535;
constexpr std::int32_t kMostCaptureRate = 1'000'000;  // thousandths

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
                      const std::string& scheme) {
    if (scheme == "device" || scheme == "screencap") {
        if (input.empty())
            RefuseArgument(fmt::format("The source of the scheme \"{}\" has no name", scheme));
        return {input, scheme, "", {}, CaptureOf(parts, type, input, scheme)};
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
    const SourceInput& opened = Opened();
    return opened.IsFile() ? WholeMilliseconds(opened.media->audio->duration) : 0;
}

void AudioSource::SetContentMode(std::int32_t mode) {
    content_mode_ = InRange("ContentMode", mode, 0, 2);
}

bool VideoSource::IsStill() const { return Opened().IsFile() && Opened().media->video->still; }

std::optional<CameraFormat> VideoSource::CameraFormatFor(const CameraWish& wish) const {
    const std::optional<CaptureInput>& capture = Opened().capture;
    if (!capture || capture->device.kind != DeviceKind::Camera) return std::nullopt;
    return Parts().camera_format(capture->device, wish);
}

std::int32_t VideoSource::Duration() const {
    if (IsStill()) return still_duration_;
    return Opened().IsFile() ? WholeMilliseconds(Opened().media->video->duration) : 0;
}

void VideoSource::SetOptimization(std::int32_t optimization) {
    optimization_ = InRange("Optimization", optimization, 0, kNoUpperLimit);
}
void VideoSource::SetPixelAspectRatioX(std::int32_t x) {
    pixel_aspect_x_ = InRange("PixelAspectRatioX", x, 1, kMostAspect);
}
void VideoSource::SetPixelAspectRatioY(std::int32_t y) {
    pixel_aspect_y_ = InRange("PixelAspectRatioY", y, 1, kMostAspect);
}
void VideoSource::SetCroppingLeftMargin(std::int32_t pixels) {
    left_ = InRange("CroppingLeftMargin", pixels, 0, kMostPixels);
}
void VideoSource::SetCroppingRightMargin(std::int32_t pixels) {
    right_ = InRange("CroppingRightMargin", pixels, 0, kMostPixels);
}
void VideoSource::SetCroppingTopMargin(std::int32_t pixels) {
    top_ = InRange("CroppingTopMargin", pixels, 0, kMostPixels);
}
void VideoSource::SetCroppingBottomMargin(std::int32_t pixels) {
    bottom_ = InRange("CroppingBottomMargin", pixels, 0, kMostPixels);
}
void VideoSource::SetCaptureRate(std::int32_t thousandths) {
    capture_rate_ = InRange("CaptureRate", thousandths, 1, kMostCaptureRate);
}
std::string VideoSource::CaptureArea() const {
    const std::optional<CaptureInput>& capture = Opened().capture;
    const bool screen = capture && capture->device.kind == DeviceKind::Screen;
    return screen ? Describe(capture->area) : std::string();
}
void VideoSource::SetScreenSize(const ScreenSize& size) {
    SourceInput input = Opened();
    input.capture->screen_size = size;
    TakeInput(input);
}
void VideoSource::SetStillDuration(std::int32_t milliseconds) {
    still_duration_ = InRange("StillDuration", milliseconds, 1, kNoUpperLimit);
}

}  // namespace engine
