#include "engine/encoders/av_video_settings.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace engine {
namespace {

using platform::VbrMode;

constexpr std::int64_t kFinestLambda = FF_QP2LAMBDA;
constexpr int kFinestQuantiser = 1;
constexpr int kBestQuantiser = 2;  // of quality mode
constexpr int kCoarsestQuantiser = 31;
constexpr int kSharpestCoarsest = 12;
constexpr int kUsualSharpness = 75;
constexpr int kToleranceMs = 600;
constexpr int kUsualBufferMs = 5000;

struct EffortRow {
    std::int32_t up_to;
    int mb_decision;
    int trellis;
    int compare;  // of motion search
    int sub_pixel_quality;
};

// clang-format off
constexpr EffortRow kEfforts[] = {
    // up to  macroblock decision  trellis  compare      sub-pixel
    {     19, FF_MB_DECISION_SIMPLE, 0,     FF_CMP_SAD,  2},
    {     60, FF_MB_DECISION_SIMPLE, 0,     FF_CMP_SAD,  8},
    {     79, FF_MB_DECISION_BITS,   0,     FF_CMP_SAD,  8},
    {     94, FF_MB_DECISION_RD,     0,     FF_CMP_SATD, 8},
    {    100, FF_MB_DECISION_RD,     1,     FF_CMP_SATD, 8},
};
// clang-format on

int Limited(std::int64_t value) {
    return static_cast<int>(std::clamp<std::int64_t>(value, 1, std::numeric_limits<int>::max()));
}

int BufferBits(std::int32_t rate_bps, std::int32_t buffer_ms) {
    const std::int64_t ms = buffer_ms > 0 ? buffer_ms : kUsualBufferMs;
    return Limited(rate_bps * ms / 1000);
}

}  // namespace

int CoarsestQuantiser(std::int32_t sharpness) {
    const int above = std::clamp(sharpness, kUsualSharpness, 100) - kUsualSharpness;
    return kCoarsestQuantiser -
           above * (kCoarsestQuantiser - kSharpestCoarsest) / (100 - kUsualSharpness);
}

int QualityLambda(std::int32_t quality) {
    const double part = (100 - std::clamp(quality, 0, 100)) / 100.0;
    const double quantiser = kBestQuantiser + part * (kCoarsestQuantiser - kBestQuantiser);
    return static_cast<int>(std::lround(quantiser * FF_QP2LAMBDA));
}

void SetRateControl(AVCodecContext& codec, const VideoPlan& plan) {
    if (plan.mode == VbrMode::Quality) {
        codec.flags |= AV_CODEC_FLAG_QSCALE;
        codec.global_quality = QualityLambda(plan.quality);
        return;
    }
    codec.bit_rate = plan.bit_rate_bps;
    // How far the rate may stray before the quantiser turns against it.
    codec.bit_rate_tolerance = Limited(std::int64_t{plan.bit_rate_bps} * kToleranceMs / 1000);
    codec.qmin = kFinestQuantiser;
    av_opt_set_int(codec.priv_data, "lmin", kFinestLambda, 0);
    codec.qmax = CoarsestQuantiser(plan.sharpness);
    if (plan.mode == VbrMode::Constant) {
        codec.rc_max_rate = plan.bit_rate_bps;
        codec.rc_buffer_size = BufferBits(plan.bit_rate_bps, plan.buffer_ms);
    } else if (plan.mode == VbrMode::Peak) {
        codec.rc_max_rate = std::max(plan.peak_rate_bps, plan.bit_rate_bps);
        codec.rc_buffer_size =
            BufferBits(static_cast<std::int32_t>(codec.rc_max_rate), plan.peak_buffer_ms);
    }
}

void SetEffort(AVCodecContext& codec, std::int32_t performance) {
    const EffortRow* row = std::begin(kEfforts);
    while (row + 1 != std::end(kEfforts) && performance > row->up_to) ++row;
    codec.mb_decision = row->mb_decision;
    codec.trellis = row->trellis;
    codec.me_cmp = row->compare;
    codec.me_sub_cmp = row->compare;
    codec.me_subpel_quality = row->sub_pixel_quality;
}

}  // namespace engine
