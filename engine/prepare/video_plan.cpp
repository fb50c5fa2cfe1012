#include "engine/prepare/video_plan.h"

#include <algorithm>
#include <string>
#include <variant>

#include <fmt/format.h>

#include "engine/plan/codec_names.h"
#include "engine/plan/conformance.h"
#include "engine/plan/value_checks.h"
#include "engine/prepare/frame_size.h"
#include "engine/prepare/peak_plan.h"
#include "engine/prepare/preprocessing.h"
#include "platform/pixel_format_table.h"
#include "platform/text.h"

namespace engine {
namespace {

using platform::VbrMode;

constexpr PeakNames kPeakNames = {"video", "VideoPeakBitrate", "VideoBufferMax", "-v_peakbitrate",
                                  5000};

// Of a camera that has no rate as low as the one that was asked for, frames are dropped.
bool IsTooFast(const VideoSourceRecord& source, const std::optional<CameraFormat>& camera) {
    return camera && RateOf(camera->interval) > source.capture_rate;
}

// What is known of the video before its first frame is there.
VideoInfo VideoOf(const VideoSourceRecord& source, const std::optional<CameraFormat>& camera) {
    const SourceInput& opened = source.input;
    if (!opened.capture) return *opened.media->video;
    VideoInfo info;
    if (camera) {
        info.width = camera->width;
        info.height = camera->height;
    } else {
        info.width = opened.capture->screen_size.width;
        info.height = opened.capture->screen_size.height;
    }
    info.frame_rate = {source.capture_rate, 1000};
    if (camera && !IsTooFast(source, camera))
        info.frame_rate = {camera->interval.denominator, camera->interval.numerator};
    return info;
}

std::int32_t ExpectedRate(std::int32_t ceiling, const Ratio& source) {
    if (source.numerator <= 0 || source.denominator <= 0) return ceiling;
    const double thousandths = platform::RoundHalfToEven(
        1000.0 * static_cast<double>(source.numerator) / static_cast<double>(source.denominator));
    if (thousandths < 1 || thousandths >= ceiling) return ceiling;
    return static_cast<std::int32_t>(thousandths);
}

void PlanPixels(const VideoSourceRecord& source, VideoPlan& plan) {
    if (source.pixel_format == 0) return;
    plan.pixels = platform::FindPixelFormat(source.pixel_format);
    if (plan.pixels == nullptr || *plan.pixels->av_name == '\0')
        RefuseArgument(
            fmt::format("Pictures cannot be turned into the pixel format {:08X} (one with a "
                        "palette, or unknown): give -pixelformat another",
                        source.pixel_format));
    if (plan.codec->four_cc != 0) return;
    if (!plan.pixels->uncompressed)
        RefuseArgument(
            fmt::format("{} in {} would be read as RGB555: give -pixelformat RGB555 or RGB24, or "
                        "another -v_codec",
                        plan.codec->name, plan.pixels->name));
    if (plan.width % plan.pixels->step != 0 || plan.height % plan.pixels->row_step != 0)
        RefuseArgument(
            fmt::format("{} in {} cannot be {} x {}: give -v_width a multiple of {} and -v_height "
                        "one of {}",
                        plan.codec->name, plan.pixels->name, plan.width, plan.height,
                        plan.pixels->step, plan.pixels->row_step));
}

// "" = none.
std::string ConformanceTarget(const ProfileRecord& profile) {
    const auto& properties = profile.audiences.front().properties;
    const auto target = properties.find({platform::SourceType::Video, "DeviceConformanceTarget"});
    if (target == properties.end()) return {};
    const auto* text = std::get_if<std::string>(&target->second);
    return text != nullptr ? *text : std::string();
}

std::string RateDescription(const VideoPlan& plan) {
    const double kilobits = platform::RoundHalfToEven(plan.bit_rate_bps / 1000.0);
    switch (plan.mode) {
        case VbrMode::Constant:
            return fmt::format("{} kbps CBR", kilobits);
        case VbrMode::BitRate:
            return fmt::format("{} kbps VBR", kilobits);
        case VbrMode::Quality:
            return fmt::format("quality {} VBR", plan.quality);
        case VbrMode::Peak:
            return fmt::format("{} kbps VBR, peak {} kbps", kilobits,
                               platform::RoundHalfToEven(plan.peak_rate_bps / 1000.0));
    }
    return {};
}

std::string VideoDescription(const VideoPlan& plan) {
    if (plan.codec->four_cc == 0) return {};
    const bool screen = plan.codec->maker.kind == platform::CodecMaker::Kind::Screen;
    return RateDescription(plan) + (screen ? ", lossless up to 255 colours" : "");
}

}  // namespace

CameraRequest PlanCameraRequest(const VideoSourceRecord& source, const ProfileRecord& profile) {
    const VideoSettings& video = profile.audiences.front().video;
    CameraRequest request = {video.width, video.height,
                             std::min(video.frame_rate, source.capture_rate)};
    if (request.width > 0) request.width += source.left_margin + source.right_margin;
    if (request.height > 0) request.height += source.top_margin + source.bottom_margin;
    return request;
}

VideoPlan PlanVideo(const VideoSourceRecord& source, const ProfileRecord& profile,
                    std::int32_t performance, const std::optional<CameraFormat>& camera) {
    const VideoSettings& video = profile.audiences.front().video;
    const VideoInfo info = VideoOf(source, camera);
    VideoPlan plan;
    plan.codec = &platform::kVideoCodecs[static_cast<std::size_t>(video.codec)];
    plan.mode = profile.video_mode;
    if (!plan.codec->modes.Has(plan.mode))
        RefuseArgument(
            fmt::format("{} has no {} mode: give -v_mode 0 or another -v_codec; a mode that a "
                        "profile or an earlier command has set stays until a new session",
                        plan.codec->name, ModeName(plan.mode)));
    const bool rate_counts = plan.mode != VbrMode::Quality && plan.codec->four_cc != 0;
    if (rate_counts && video.bit_rate_bps == 0)
        RefuseArgument("The profile has no video bit rate: give -v_bitrate or a profile code");
    PlanSize(source, info, profile, plan);
    PlanPixels(source, plan);
    PlanPreprocessing(source, profile, plan);
    plan.rate_ceiling = video.frame_rate;
    if (IsTooFast(source, camera))
        plan.rate_ceiling = std::min(plan.rate_ceiling, source.capture_rate);
    Ratio source_rate = info.frame_rate;
    if (plan.telecine) source_rate = {source_rate.numerator * 4, source_rate.denominator * 5};
    plan.expected_rate = ExpectedRate(video.frame_rate, source_rate);
    plan.bit_rate_bps = video.bit_rate_bps;
    plan.buffer_ms = video.buffer_ms;
    plan.sharpness = video.sharpness;
    plan.quality = video.quality;
    plan.key_frame_distance_ms = video.key_frame_distance_ms;
    plan.performance = performance;
    if (plan.mode == VbrMode::Peak) {
        const Peak peak =
            PlanPeak(kPeakNames, video.bit_rate_bps, video.peak_rate_bps, video.peak_buffer_ms);
        plan.peak_rate_bps = peak.rate_bps;
        plan.peak_buffer_ms = peak.buffer_ms;
    }
    const std::string target = ConformanceTarget(profile);
    if (!target.empty()) PlanConformance(target, plan);
    plan.codec_name = plan.codec->name;
    plan.codec_description = VideoDescription(plan);
    return plan;
}

}  // namespace engine
