#include "engine/plan/conformance.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <string_view>

#include <fmt/format.h>

#include "engine/plan/value_checks.h"
#include "platform/text.h"

namespace engine {
namespace {

using platform::VbrMode;

constexpr std::int64_t kMacroblock = 16;      // pixels a side
constexpr std::int64_t kBufferUnit = 16'384;  // bits

struct Level {
    std::string_view name;
    std::int64_t macroblocks;  // of a frame
    std::int32_t rate;         // thousandths of a frame per second, of a frame that large
    std::int64_t bps;
    std::int64_t buffer_units;
    const char* example;
};

// clang-format off
constexpr Level kLevels[] = {
    // name    macroblocks rate   bps         buffer example
    {"SP@LL",   99,        15000,    96'000,    20,  "176x144 at 15 pictures a second"},
    {"SP@ML",  396,        15000,   384'000,    77,  "352x288 at 15 pictures a second"},
    {"MP@LL",  300,        24000,  2'000'000,  306,  "320x240 at 24 pictures a second"},
    {"MP@ML", 1620,        25000, 10'000'000,  611,  "720x576 at 25 pictures a second"},
    {"MP@HL", 8160,        30000, 20'000'000, 2442,  "1920x1080 at 30 pictures a second"},
};
// clang-format on
constexpr std::string_view kComplex = "CP";

std::int64_t Macroblocks(const VideoPlan& plan) {
    const auto along = [](std::int64_t side) { return (side + kMacroblock - 1) / kMacroblock; };
    return along(plan.width) * along(plan.height);
}

// Smaller frames may be as many more.
bool TooFast(const VideoPlan& plan, const Level& level) {
    return Macroblocks(plan) * plan.expected_rate > level.macroblocks * level.rate;
}

std::int64_t HighestRate(const VideoPlan& plan) {
    if (plan.mode == VbrMode::Quality) return 0;
    return std::max(plan.bit_rate_bps, plan.peak_rate_bps);
}

bool Holds(const Level& level, const VideoPlan& plan) {
    return Macroblocks(plan) <= level.macroblocks && !TooFast(plan, level) &&
           HighestRate(plan) <= level.bps;
}

void ShortenBuffer(std::int64_t bits, std::int64_t rate_bps, std::int32_t& buffer_ms) {
    if (rate_bps > 0 && buffer_ms > 0)
        buffer_ms =
            static_cast<std::int32_t>(std::min<std::int64_t>(buffer_ms, bits * 1000 / rate_bps));
}

[[noreturn]] void RefuseBeyond(const std::string& target, const Level& level,
                               const VideoPlan& plan) {
    const std::string limit =
        fmt::format("the device conformance {} ends at {}", target, level.example);
    if (Macroblocks(plan) > level.macroblocks)
        RefuseArgument(
            fmt::format("A picture of {}x{} is too large: {}; lower -v_width and "
                        "-v_height, or leave -v_profile out",
                        plan.width, plan.height, limit));
    if (TooFast(plan, level))
        RefuseArgument(
            fmt::format("{} pictures a second of {}x{} are too many: {}; lower "
                        "-v_framerate, -v_width or -v_height, or leave -v_profile out",
                        plan.expected_rate / 1000.0, plan.width, plan.height, limit));
    RefuseArgument(
        fmt::format("{} bits per second are too many: the device conformance {} ends "
                    "at {}; lower {}, or leave -v_profile out",
                    HighestRate(plan), target, level.bps,
                    plan.mode == VbrMode::Peak ? "-v_peakbitrate" : "-v_bitrate"));
}

}  // namespace

void PlanConformance(const std::string& target, VideoPlan& plan) {
    if (plan.codec->four_cc != platform::FourCC("WMV3"))
        RefuseArgument(
            fmt::format("{} knows no device conformance: leave -v_profile out, or give "
                        "-v_codec WMV9",
                        plan.codec->name));
    if (target == kComplex)
        throw platform::Error(
            platform::kNotImplemented,
            fmt::format("{} cannot be encoded to the device conformance CP: give -v_profile MP, or "
                        "SP for the simplest devices",
                        plan.codec->name));
    const auto meant = [&](const Level& level) {
        return level.name == target || level.name.substr(0, level.name.find('@')) == target;
    };
    const auto first = std::find_if(std::begin(kLevels), std::end(kLevels), meant);
    if (first == std::end(kLevels))
        RefuseArgument(
            fmt::format("The device conformance {} is unknown: give -v_profile SP or MP", target));
    const auto last = std::find_if_not(first, std::end(kLevels), meant);
    auto level = std::find_if(first, last, [&](const Level& row) { return Holds(row, plan); });
    if (level == last) RefuseBeyond(target, *std::prev(last), plan);
    // A quality has no rate of its own: it may take what the profile gives.
    if (plan.mode == VbrMode::Quality) level = std::prev(last);
    plan.conformance = level->name;
    plan.simple_profile = level->name.starts_with('S');
    plan.level_rate_bps = level->bps;
    plan.level_buffer_bits = level->buffer_units * kBufferUnit;
    ShortenBuffer(plan.level_buffer_bits, plan.bit_rate_bps, plan.buffer_ms);
    ShortenBuffer(plan.level_buffer_bits, plan.peak_rate_bps, plan.peak_buffer_ms);
}

}  // namespace engine
