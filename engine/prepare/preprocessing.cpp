#include "engine/prepare/preprocessing.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include <fmt/format.h>

#include "engine/plan/value_checks.h"

namespace engine {
namespace {

// What Optimization may be beside the known patterns of film.
struct FilterRow {
    std::int32_t optimization;
    bool deinterlace;
    bool remove_telecine;
    std::optional<FieldCoding> fields;  // none = as the profile says
};
// clang-format off
constexpr FilterRow kFilters[] = {
    // optimization deinterlace remove_telecine fields
    {0,             false,      false,          std::nullopt},
    {1,             false,      false,          FieldCoding::None},
    {2,             true,       false,          FieldCoding::None},
    {3,             false,      true,           FieldCoding::None},
    {4,             false,      false,          FieldCoding::AsTheSource},
    {0x2004,        false,      false,          FieldCoding::TopFirst},
    {0x3004,        false,      false,          FieldCoding::BottomFirst},
};
// clang-format on

// A film's pattern that is known is 0xN3: N from 2 to 6 is the first frame, AA to DD, where the top
// field comes first, N from 7 to 11 the same for the bottom field.
std::optional<TelecinePattern> PatternOf(std::int32_t optimization) {
    constexpr std::int32_t kKnownPattern = 3;
    constexpr std::int32_t kFirstPattern = 2;
    constexpr std::int32_t kPatterns = 5;  // of either field
    const std::int32_t pattern = optimization / 16 - kFirstPattern;
    if (optimization % 16 != kKnownPattern || pattern < 0 || pattern >= 2 * kPatterns) return {};
    return TelecinePattern{pattern % kPatterns, pattern >= kPatterns};
}

FilterRow FilterOf(std::int32_t optimization) {
    const FilterRow* const row =
        std::ranges::find(kFilters, optimization, &FilterRow::optimization);
    if (row == std::end(kFilters))
        RefuseUnbuilt(
            fmt::format("The video filter that was asked for (Optimization {}) is not "
                        "possible yet: leave -v_preproc out, or give 0 to 18",
                        optimization));
    return *row;
}

}  // namespace

void PlanPreprocessing(const VideoSourceRecord& source, const ProfileRecord& profile,
                       VideoPlan& plan) {
    plan.telecine = PatternOf(source.optimization);
    const FilterRow filter = plan.telecine
                                 ? FilterRow{source.optimization, false, false, FieldCoding::None}
                                 : FilterOf(source.optimization);
    plan.deinterlace = filter.deinterlace;
    plan.remove_telecine = filter.remove_telecine;
    // A profile is kept from one command to the next, and once interlaced stays so.
    plan.fields =
        filter.fields.value_or(profile.interlaced ? FieldCoding::AsTheSource : FieldCoding::None);
    if (plan.fields != FieldCoding::None && !plan.codec->fields)
        RefuseUnbuilt(
            fmt::format("{} cannot code interlaced pictures here: give -v_preproc 1 to make whole "
                        "ones of them, or -v_codec MP41",
                        plan.codec->name));
}

}  // namespace engine
