#include "engine/encoders/video_rate.h"

#include <algorithm>
#include <cmath>

#include "codecs/wmv9/encoder.h"
#include "engine/plan/frame_memory.h"

namespace engine {
namespace {

using platform::VbrMode;

constexpr double kFinestQuantiser = 1;
constexpr double kFinestFirst = 3;    // of a first pass: a still that it begins with tells nothing
constexpr double kBestQuantiser = 2;  // of quality mode
constexpr double kCoarsestQuantiser = 31;
constexpr double kSharpestCoarsest = 12;
constexpr int kUsualSharpness = 75;
constexpr std::int32_t kUsualBufferMs = 5000;

double QualityQuantiser(std::int32_t quality) {
    const double part = (100 - std::clamp(quality, 0, 100)) / 100.0;
    return kBestQuantiser + part * (kCoarsestQuantiser - kBestQuantiser);
}

// Sharper pictures at the cost of their number.
double CoarsestQuantiser(double most_coarse, std::int32_t sharpness) {
    const int above = std::clamp(sharpness, kUsualSharpness, 100) - kUsualSharpness;
    return most_coarse - above * (most_coarse - kSharpestCoarsest) / (100 - kUsualSharpness);
}

double VbvBits(double rate_bps, std::int32_t buffer_ms) {
    return rate_bps * (buffer_ms > 0 ? buffer_ms : kUsualBufferMs) / 1000;
}

// Of our own encoder.
constexpr double kHalvesUpTo = 8.5;

// What a device takes that conforms.
void KeepToLevel(const VideoPlan& plan, codecs::RateSettings& rate) {
    if (plan.level_rate_bps <= 0) return;
    const auto buffer = static_cast<double>(plan.level_buffer_bits);
    if (rate.vbv_rate_bps <= 0) {
        rate.vbv_rate_bps = static_cast<double>(plan.level_rate_bps);
        rate.vbv_bits = buffer;
    }
    rate.vbv_bits = std::min(rate.vbv_bits, buffer);
}

bool IsWmv9(const VideoPlan& plan) {
    return plan.codec->maker.kind == platform::CodecMaker::Kind::Wmv9;
}

Ticks LengthOf(const VideoPlan& plan, int pictures) {
    return {
        static_cast<std::int64_t>(pictures * 1000.0 / CodedFrameRate(plan) * Ticks::kPerSecond)};
}

Ticks AskedLength(const VideoPlan& plan) {
    return Ticks::FromMilliseconds(plan.key_frame_distance_ms);
}

}  // namespace

codecs::RateSettings VideoRate(const VideoPlan& plan, const EncoderPass& pass) {
    codecs::RateSettings rate;
    rate.rate_bps = plan.bit_rate_bps;
    if (IsWmv9(plan)) {
        rate.halves_up_to = kHalvesUpTo;
        rate.most_coarse = codecs::wmv9::kCoarsestAsked;
    }
    if (plan.mode == VbrMode::Quality) {
        rate.finest = rate.coarsest = rate.Coded(QualityQuantiser(plan.quality));
        KeepToLevel(plan, rate);
        return rate;
    }
    rate.finest = kFinestQuantiser;
    rate.sharpens = plan.input.capture.has_value();
    rate.coarsest = CoarsestQuantiser(rate.most_coarse, plan.sharpness);
    // The first of two passes only finds out what the pictures take.
    rate.steady = pass.number < pass.count;
    if (rate.steady) {
        rate.finest = kFinestFirst;
        return rate;
    }
    if (plan.mode == VbrMode::Constant) {
        rate.vbv_rate_bps = plan.bit_rate_bps;
        rate.vbv_bits = VbvBits(plan.bit_rate_bps, plan.buffer_ms);
        rate.may_drop = true;
    } else if (plan.mode == VbrMode::Peak) {
        rate.vbv_rate_bps = std::max(plan.peak_rate_bps, plan.bit_rate_bps);
        rate.vbv_bits = VbvBits(rate.vbv_rate_bps, plan.peak_buffer_ms);
    }
    KeepToLevel(plan, rate);
    return rate;
}

codecs::RateExperience UsualExperience(const VideoPlan& plan) {
    constexpr double kKeyTexturePerCost = 2.7;
    constexpr double kDeltaResidue = 1.4;
    constexpr double kFixedPerPixel = 0.02;
    constexpr double kMostFixed = 0.2;  // of what the rate gives a picture
    const double pictures_per_second = CodedFrameRate(plan) / 1000.0;
    double fixed = kFixedPerPixel * plan.width * plan.height;
    if (plan.bit_rate_bps > 0)
        fixed = std::min(fixed, kMostFixed * plan.bit_rate_bps / pictures_per_second);
    return {pictures_per_second, kKeyTexturePerCost, fixed, kDeltaResidue, fixed};
}

bool CodesRows(const VideoPlan& plan) {
    if (!IsWmv9(plan)) return false;
    if (plan.input.capture) return true;
    const FrameMemory memory = FrameMemoryOf(plan);
    const Ticks longest = LengthOf(plan, memory.longest_gop);
    const Ticks length = AskedLength(plan).count > 0 ? AskedLength(plan) : longest;
    return length > longest || length > LengthOf(plan, 2 * memory.waiting + 1);
}

Ticks GopLength(const VideoPlan& plan) {
    const Ticks longest = LengthOf(plan, FrameMemoryOf(plan).longest_gop);
    const Ticks asked = AskedLength(plan);
    if (asked.count <= 0) return longest;
    if (CodesRows(plan)) return asked;
    const std::int64_t parts = (asked.count + longest.count - 1) / longest.count;
    return {asked.count / parts};
}

}  // namespace engine
