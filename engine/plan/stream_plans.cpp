#include "engine/plan/stream_plans.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <string>
#include <variant>

#include <fmt/format.h>

#include "engine/plan/conformance.h"
#include "platform/text.h"

namespace engine {

namespace {

using platform::VbrMode;

constexpr std::int32_t kAudioPeakBufferMs = 3000;
constexpr std::int32_t kVideoPeakBufferMs = 5000;
constexpr std::int32_t kLeastSide = 2;

// What Optimization may be. A film's pattern that is known is 0xN3: N from 2 to 6 is the first
// frame, AA to DD, where the top field comes first, N from 7 to 11 the same for the bottom field.
constexpr std::int32_t kNoPreprocessing[] = {0, 1};
constexpr std::int32_t kDeinterlace = 2;
constexpr std::int32_t kRemoveTelecine = 3;
constexpr std::int32_t kInterlaced = 4;
constexpr std::int32_t kInterlacedTop = 0x2004;
constexpr std::int32_t kInterlacedBottom = 0x3004;
constexpr std::int32_t kFirstPattern = 2;
constexpr std::int32_t kPatterns = 5;  // of either field

[[noreturn]] void RefuseUnbuilt(const std::string& description) {
    throw platform::Error(platform::kNotImplemented, description);
}

// A peak that was not given is half as much again as the average.
std::int32_t PeakFor(const char* medium, const char* option, std::int32_t average,
                     std::int32_t peak) {
    if (peak == 0) {
        const double higher = platform::RoundHalfToEven(1.5 * average);
        return static_cast<std::int32_t>(std::min<double>(higher, kNoUpperLimit));
    }
    if (peak >= average) return peak;
    RefuseArgument(
        fmt::format("The {} peak bit rate {} is below the average bit rate {}: raise {} "
                    "or lower the bit rate",
                    medium, peak, average, option));
}

Ratio Reduced(std::int64_t numerator, std::int64_t denominator) {
    const std::int64_t divisor = std::gcd(numerator, denominator);
    return {numerator / divisor, denominator / divisor};
}

Ratio SourcePixelAspect(const VideoSource& source, const VideoInfo& info) {
    const std::int32_t x = source.PixelAspectRatioX();
    const std::int32_t y = source.PixelAspectRatioY();
    if (x != 0 || y != 0) return Reduced(std::max(x, 1), std::max(y, 1));
    if (info.pixel_aspect.numerator <= 0 || info.pixel_aspect.denominator <= 0) return {1, 1};
    return info.pixel_aspect;
}

std::int32_t Scaled(std::int32_t side, double factor) {
    return static_cast<std::int32_t>(platform::RoundHalfToEven(side * factor));
}

// What is left of a side once its margins are cut off.
std::int32_t Clipped(const char* sides, std::int32_t side, std::int32_t before,
                     std::int32_t after) {
    if (before < side - after) return side - before - after;
    RefuseArgument(
        fmt::format("The {} margins {} and {} leave nothing of the source's {} pixels: lower "
                    "-v_clip",
                    sides, before, after, side));
}

// Of a camera that has no rate as low as the one that was asked for, pictures are left out.
bool IsTooFast(const VideoSource& source, const std::optional<CameraFormat>& camera) {
    return camera && RateOf(camera->interval) > source.CaptureRate();
}

// What is known of the picture before the first one is there.
VideoInfo PictureOf(const VideoSource& source, const std::optional<CameraFormat>& camera) {
    const SourceInput& opened = source.Opened();
    if (!opened.capture) return *opened.media->video;
    VideoInfo info;
    if (camera) {
        info.width = camera->width;
        info.height = camera->height;
    } else {
        info.width = opened.capture->screen_size.width;
        info.height = opened.capture->screen_size.height;
    }
    info.frame_rate = {source.CaptureRate(), 1000};
    if (camera && !IsTooFast(source, camera))
        info.frame_rate = {camera->interval.denominator, camera->interval.numerator};
    return info;
}

// A size that follows from the source loses a column or row; one that was asked for, a pixel.
void EvenSides(bool source_size, VideoPlan& plan) {
    const auto even = [source_size](bool wanted, std::int32_t& side, std::int32_t& margin) {
        if (!wanted || side % 2 == 0 || side < kLeastSide) return;
        --side;
        if (source_size) ++margin;
    };
    even(plan.codec->even_width, plan.width, plan.crop.right);
    even(plan.codec->even_height, plan.height, plan.crop.bottom);
}

void PlanSize(const VideoSource& source, const VideoInfo& info, const ProfileState& profile,
              VideoPlan& plan) {
    const VideoSettings& video = profile.audiences.front().video;
    if (source.Opened().capture && info.width == 0) return;  // its desktop has not been asked yet
    if (info.width <= 0 || info.height <= 0)
        throw platform::Error(platform::kInvalidData,
                              fmt::format("The picture of {} has no size", source.Opened().input));
    plan.crop = {source.CroppingLeftMargin(), source.CroppingRightMargin(),
                 source.CroppingTopMargin(), source.CroppingBottomMargin()};
    const std::int32_t width =
        Clipped("left and right", info.width, plan.crop.left, plan.crop.right);
    const std::int32_t height =
        Clipped("top and bottom", info.height, plan.crop.top, plan.crop.bottom);
    const Ratio aspect = SourcePixelAspect(source, info);
    const bool source_size = video.width == 0 && video.height == 0;
    const bool square = !source_size && !profile.non_square_pixels;
    const double stretch =
        square ? static_cast<double>(aspect.numerator) / static_cast<double>(aspect.denominator)
               : 1.0;
    const double shape = stretch * width / height;
    plan.width = source_size ? width : video.width == 0 ? Scaled(video.height, shape) : video.width;
    plan.height = source_size         ? height
                  : video.height == 0 ? Scaled(video.width, 1 / shape)
                                      : video.height;
    EvenSides(source_size, plan);
    plan.width = std::max(plan.width, kLeastSide);
    plan.height = std::max(plan.height, kLeastSide);
    if (source_size)
        plan.pixel_aspect = aspect;
    else if (!square)
        plan.pixel_aspect = Reduced(aspect.numerator * width * plan.height,
                                    aspect.denominator * height * plan.width);
}

std::optional<TelecinePattern> PatternOf(std::int32_t optimization) {
    const std::int32_t pattern = optimization / 16 - kFirstPattern;
    if (optimization % 16 != kRemoveTelecine || pattern < 0 || pattern >= 2 * kPatterns) return {};
    return TelecinePattern{pattern % kPatterns, pattern >= kPatterns};
}

std::int32_t ExpectedRate(std::int32_t ceiling, const Ratio& source) {
    if (source.numerator <= 0 || source.denominator <= 0) return ceiling;
    const double thousandths = platform::RoundHalfToEven(
        1000.0 * static_cast<double>(source.numerator) / static_cast<double>(source.denominator));
    if (thousandths < 1 || thousandths >= ceiling) return ceiling;
    return static_cast<std::int32_t>(thousandths);
}

void PlanPixels(const VideoSource& source, VideoPlan& plan) {
    if (source.PixelFormat() == 0) return;
    plan.pixels = FindPixelFormat(source.PixelFormat());
    if (plan.pixels == nullptr)
        RefuseArgument(
            fmt::format("Pictures cannot be turned into the pixel format {:08X} (one with a "
                        "palette, or unknown): give -pixelformat another",
                        source.PixelFormat()));
    if (plan.codec->written_four_cc != 0) return;
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

void PlanFields(const VideoSource& source, const ProfileState& profile, VideoPlan& plan) {
    const std::int32_t optimization = source.Optimization();
    switch (optimization) {
        case kInterlacedTop:
            plan.fields = FieldCoding::TopFirst;
            break;
        case kInterlacedBottom:
            plan.fields = FieldCoding::BottomFirst;
            break;
        default:
            if (optimization != kInterlaced && !profile.interlaced) return;
            plan.fields = FieldCoding::AsTheSource;
    }
    if (!plan.codec->fields)
        RefuseUnbuilt(
            fmt::format("{} cannot code interlaced pictures here: give -v_preproc 1 to make whole "
                        "ones of them, or -v_codec MP41",
                        plan.codec->name));
}

void RefuseUnbuiltVideo(const VideoSource& source) {
    const std::int32_t optimization = source.Optimization();
    const bool preprocessing_known =
        optimization == kDeinterlace || optimization == kRemoveTelecine ||
        optimization == kInterlaced || optimization == kInterlacedTop ||
        optimization == kInterlacedBottom || PatternOf(optimization) ||
        std::find(std::begin(kNoPreprocessing), std::end(kNoPreprocessing), optimization) !=
            std::end(kNoPreprocessing);
    if (!preprocessing_known)
        RefuseUnbuilt(
            fmt::format("The video filter that was asked for (Optimization {}) is not "
                        "possible yet: leave -v_preproc out, or give 0 to 18",
                        optimization));
}

// "" = none.
std::string ConformanceTarget(const ProfileState& profile) {
    const auto& properties = profile.audiences.front().properties;
    const auto target = properties.find({platform::SourceType::Video, "DeviceConformanceTarget"});
    if (target == properties.end()) return {};
    const auto* text = std::get_if<std::string>(&target->second);
    return text != nullptr ? *text : std::string();
}

std::string VideoDescription(const VideoPlan& plan) {
    if (plan.codec->four_cc == 0) return {};
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

}  // namespace

AudioPlan PlanAudio(const AudioSource& source, const ProfileState& profile) {
    const AudioSettings& audio = profile.audiences.front().audio;
    if (!source.ContentEDL().empty())
        RefuseUnbuilt(
            fmt::format("The optimization definition file {} cannot be used yet: leave "
                        "-a_contentedl out",
                        source.ContentEDL()));
    if (audio.format.sampling_rate == 0)
        RefuseArgument("The profile has no audio format: give -a_setting or a profile code");
    AudioPlan plan;
    plan.codec = &AudioCodecs()[static_cast<std::size_t>(audio.codec)];
    plan.mode = profile.audio_mode;
    // Codec and mode may have been changed after the format was chosen.
    plan.format = RequireAudioFormat(*plan.codec, plan.mode, audio.format);
    plan.written = WrittenFor(*plan.codec, plan.mode, plan.format);
    plan.codec_name = AudioDisplayName(*plan.codec, plan.mode);
    plan.codec_description = AudioDescription(*plan.codec, plan.mode, plan.format);
    if (plan.mode == VbrMode::Peak) {
        plan.peak_rate_bps =
            PeakFor("audio", "-a_peakbitrate", plan.format.value, audio.peak_rate_bps);
        plan.peak_buffer_ms = audio.peak_buffer_ms != 0 ? audio.peak_buffer_ms : kAudioPeakBufferMs;
    }
    return plan;
}

FoldDown PlanFoldDown(
    const std::vector<std::pair<std::string, platform::AttributeValue>>& attributes) {
    FoldDown levels;
    const auto take = [&](const char* name, std::int32_t& level) {
        for (const auto& [attribute, value] : attributes) {
            const std::int32_t* number = std::get_if<std::int32_t>(&value);
            if (attribute != name || number == nullptr) continue;
            if (*number > 0 || *number < -FoldDown::kSilence)
                RefuseArgument(
                    fmt::format("{} {} is no attenuation: give -a_folddown6to2 numbers from 0 to "
                                "{} decibels",
                                name, -std::int64_t{*number}, FoldDown::kSilence));
            level = -*number;
        }
    };
    take("SurroundMix", levels.surround);
    take("CenterMix", levels.center);
    take("LFEMix", levels.lfe);
    return levels;
}

CameraWish PlanCameraWish(const VideoSource& source, const ProfileState& profile) {
    const VideoSettings& video = profile.audiences.front().video;
    CameraWish wish = {video.width, video.height, std::min(video.frame_rate, source.CaptureRate())};
    if (wish.width > 0) wish.width += source.CroppingLeftMargin() + source.CroppingRightMargin();
    if (wish.height > 0) wish.height += source.CroppingTopMargin() + source.CroppingBottomMargin();
    return wish;
}

VideoPlan PlanVideo(const VideoSource& source, const ProfileState& profile,
                    std::int32_t performance, const std::optional<CameraFormat>& camera) {
    RefuseUnbuiltVideo(source);
    const VideoSettings& video = profile.audiences.front().video;
    const VideoInfo info = PictureOf(source, camera);
    VideoPlan plan;
    plan.codec = &VideoCodecs()[static_cast<std::size_t>(video.codec)];
    plan.mode = profile.video_mode;
    if (video.codec >= VideoCodecCount(plan.mode))
        RefuseArgument(
            fmt::format("{} has no {} mode: give -v_mode 0 or another -v_codec; a mode that a "
                        "profile or an earlier command has set stays until a new session",
                        plan.codec->name, ModeName(plan.mode)));
    const bool rate_counts = plan.mode != VbrMode::Quality && plan.codec->four_cc != 0;
    if (rate_counts && video.bit_rate_bps == 0)
        RefuseArgument("The profile has no video bit rate: give -v_bitrate or a profile code");
    PlanSize(source, info, profile, plan);
    PlanPixels(source, plan);
    PlanFields(source, profile, plan);
    plan.rate_ceiling = video.frame_rate;
    if (IsTooFast(source, camera))
        plan.rate_ceiling = std::min(plan.rate_ceiling, source.CaptureRate());
    plan.deinterlace = source.Optimization() == kDeinterlace;
    plan.telecine = PatternOf(source.Optimization());
    Ratio source_rate = info.frame_rate;
    if (plan.telecine) source_rate = {source_rate.numerator * 4, source_rate.denominator * 5};
    plan.expected_rate = ExpectedRate(video.frame_rate, source_rate);
    plan.bit_rate_bps = video.bit_rate_bps;
    plan.buffer_ms = video.buffer_ms;
    plan.sharpness = video.sharpness;
    plan.quality = video.quality;
    plan.key_frame_distance_ms = video.key_frame_distance_ms;
    plan.performance = performance;
    plan.remove_telecine = source.Optimization() == kRemoveTelecine;
    if (plan.mode == VbrMode::Peak) {
        plan.peak_rate_bps =
            PeakFor("video", "-v_peakbitrate", video.bit_rate_bps, video.peak_rate_bps);
        plan.peak_buffer_ms = video.peak_buffer_ms != 0 ? video.peak_buffer_ms : kVideoPeakBufferMs;
    }
    const std::string target = ConformanceTarget(profile);
    if (!target.empty()) PlanConformance(target, plan);
    plan.codec_name = VideoDisplayName(*plan.codec);
    plan.codec_description = VideoDescription(plan);
    return plan;
}

}  // namespace engine
