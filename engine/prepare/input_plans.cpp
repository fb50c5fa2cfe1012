#include "engine/prepare/input_plans.h"

#include <algorithm>

#include <fmt/format.h>

#include "engine/plan/value_checks.h"

namespace engine {

namespace {

// 0 = unknown. Streams of one file end at slightly different times: a mark between their ends is
// good for both.
Ticks FileEnd(const MediaFileInfo& media) {
    return std::max(media.audio ? media.audio->duration : Ticks{},
                    media.video ? media.video->duration : Ticks{});
}

Ticks MarkInOf(const SourceRecord& source) { return Ticks::FromMilliseconds(source.mark_in_ms); }
Ticks MarkOutOf(const SourceRecord& source) { return Ticks::FromMilliseconds(source.mark_out_ms); }

InputPlan CheckedInput(const SourceRecord& source, const std::string& path, Ticks end,
                       bool end_is_hard) {
    const Ticks mark_in = MarkInOf(source);
    const Ticks mark_out = MarkOutOf(source);
    const bool has_end_mark = mark_out > Ticks{};
    const bool end_known = end > Ticks{};
    if (has_end_mark && mark_out <= mark_in)
        RefuseArgument(
            fmt::format("The end mark {} ms is not after the start mark {} ms: give -time "
                        "a later end",
                        source.mark_out_ms, source.mark_in_ms));
    if (has_end_mark && end_known && end_is_hard && mark_out > end)
        throw platform::Error(
            platform::kEndMarkPastEnd,
            fmt::format("The end mark {} ms lies past the end of {} ({} ms): give -time an "
                        "earlier end",
                        source.mark_out_ms, path, end.Milliseconds()));
    if (!has_end_mark && end_known && mark_in >= end)
        RefuseArgument(
            fmt::format("The start mark {} ms lies past the end of {} ({} ms): give "
                        "-time an earlier start",
                        source.mark_in_ms, path, end.Milliseconds()));
    InputPlan plan;
    plan.path = path;
    plan.mark_in = mark_in;
    plan.mark_out = mark_out;
    return plan;
}

Ticks LengthUpTo(const SourceRecord& source, Ticks end) {
    const Ticks mark_out = MarkOutOf(source);
    if (mark_out > Ticks{}) end = end > Ticks{} ? std::min(end, mark_out) : mark_out;
    return std::max(Ticks{}, end - MarkInOf(source));
}

// A capture has no end of its own.
InputPlan CaptureInputPlan(const SourceRecord& source, const SourceInput& opened) {
    const CaptureInput& capture = *opened.capture;
    InputPlan plan = CheckedInput(source, std::string(), Ticks{}, false);
    const Device& device = capture.device;
    plan.capture = {device.kind, device.id, device.name, capture.area, 0};
    plan.capture->mixed_id = device.mixed_id;
    return plan;
}

Ticks StillEnd(const VideoSourceRecord& source) {
    return Ticks::FromMilliseconds(source.still_duration_ms);
}

}  // namespace

InputPlan PlanInput(const AudioSourceRecord& source) {
    const SourceInput& opened = source.input;
    if (opened.capture) return CaptureInputPlan(source, opened);
    return CheckedInput(source, opened.host_path, FileEnd(*opened.media), true);
}

InputPlan PlanInput(const VideoSourceRecord& source) {
    const SourceInput& opened = source.input;
    if (opened.capture) return CaptureInputPlan(source, opened);
    if (!source.IsStill())
        return CheckedInput(source, opened.host_path, FileEnd(*opened.media), true);
    InputPlan plan = CheckedInput(source, opened.host_path, StillEnd(source), false);
    plan.still = true;
    if (plan.mark_out == Ticks{}) plan.mark_out = StillEnd(source);
    return plan;
}

Ticks EncodedLength(const AudioSourceRecord& source) {
    const SourceInput& opened = source.input;
    return LengthUpTo(source, opened.capture ? Ticks{} : opened.media->audio->duration);
}

Ticks EncodedLength(const VideoSourceRecord& source) {
    const SourceInput& opened = source.input;
    if (opened.capture) return LengthUpTo(source, Ticks{});
    if (!source.IsStill()) return LengthUpTo(source, opened.media->video->duration);
    const Ticks end = source.mark_out_ms != 0 ? MarkOutOf(source) : StillEnd(source);
    return std::max(Ticks{}, end - MarkInOf(source));
}

}  // namespace engine
