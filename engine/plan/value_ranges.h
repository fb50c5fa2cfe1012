// What single values of the tree may be: setters refuse what is outside, readers of files clamp it.
#pragma once

#include "engine/plan/value_checks.h"

namespace engine::ranges {

inline constexpr std::int32_t kMostPixels = 16384;

// clang-format off
inline constexpr ValueRange
    // of                     property                    least  most
    kAudioBitrate           {"The audio bit rate",        0,     kNoUpperLimit},
    kSamplingRate           {"The sampling rate",         1,     kNoUpperLimit},
    kChannels               {"The channels",              1,     kNoUpperLimit},
    kBitsPerSample          {"The bits per sample",       1,     kNoUpperLimit},
    kVideoBitrate           {"VideoBitrate",              1,     kNoUpperLimit},
    kVideoWidth             {"VideoWidth",                0,     kMostPixels},
    kVideoHeight            {"VideoHeight",               0,     kMostPixels},
    kVideoFps               {"VideoFPS",                  1,     1'000'000},
    kVideoKeyFrameDistance  {"VideoKeyFrameDistance",     0,     kNoUpperLimit},
    kVideoBufferSize        {"VideoBufferSize",           1,     600'000},
    kVideoImageSharpness    {"VideoImageSharpness",       0,     100},
    kVideoQuality           {"VideoCompressionQuality",   0,     100},
    kMinPacketSize          {"MinPacketSize",             0,     65536},
    kMaxPacketSize          {"MaxPacketSize",             0,     65536},
    kMarkIn                 {"MarkIn",                    0,     kNoUpperLimit},
    kMarkOut                {"MarkOut",                   0,     kNoUpperLimit},
    kPreProcessPass         {"PreProcessPass",            0,     1},
    kContentMode            {"ContentMode",               0,     2},
    kOptimization           {"Optimization",              0,     kNoUpperLimit},
    kPixelAspectRatioX      {"PixelAspectRatioX",         1,     65535},
    kPixelAspectRatioY      {"PixelAspectRatioY",         1,     65535},
    kCroppingLeftMargin     {"CroppingLeftMargin",        0,     kMostPixels},
    kCroppingTopMargin      {"CroppingTopMargin",         0,     kMostPixels},
    kCroppingRightMargin    {"CroppingRightMargin",       0,     kMostPixels},
    kCroppingBottomMargin   {"CroppingBottomMargin",      0,     kMostPixels},
    kCaptureRate            {"CaptureRate",               1,     1'000'000},
    kStillDuration          {"StillDuration",             1,     kNoUpperLimit},
    kPortNumber             {"PortNumber",                0,     65535},
    kVideoPerformance       {"VideoPerformance",          0,     100};
// clang-format on

}  // namespace engine::ranges
