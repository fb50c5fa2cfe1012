#include "engine/sources/files/source_times.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace engine {
namespace {

// Smaller steps are a stream's own: frames that were left out, pauses, clocks that were set.
constexpr Ticks kLeapBack = Ticks::FromMilliseconds(-500);
constexpr Ticks kLeapForward = Ticks::FromMilliseconds(10'000);
// No source is still for longer and goes on, whatever its container says.
constexpr Ticks kLongestGap = Ticks::FromMilliseconds(24LL * 60 * 60 * 1000);
// By how much a stated length may be too short.
constexpr Ticks kLengthSlack = Ticks::FromMilliseconds(2'000);

}  // namespace

Ticks BoundedTime(Ticks time) {
    return std::clamp(time, Ticks{} - SourceTimes::kFarthest, SourceTimes::kFarthest);
}

SourceTimes::SourceTimes(Ticks origin, Ticks begin, Ticks length, bool is_spliced)
    : origin_(BoundedTime(origin)), length_(BoundedTime(length)), is_spliced_(is_spliced) {
    for (Clock& clock : clocks_) clock.last = clock.next = BoundedTime(begin);
}

// Where a container leaves some decoding times out, they change with those of showing. A packet
// that comes after the last one but before its end shows that it was shorter than it stated.
bool SourceTimes::GoesOn(const Clock& clock, Ticks time, bool by_dts) {
    const Ticks leap = time - clock.next;
    const Ticks most_back = by_dts == clock.by_dts ? kLeapBack : Ticks{} - kLeapForward;
    return leap <= kLeapForward && (leap >= most_back || time > clock.last || !clock.started);
}

// By the container's length, or by the other stream, which is there already.
bool SourceTimes::IsExplained(Ticks time, Ticks leap, const Clock& other, bool by_dts) const {
    if (is_spliced_ || leap < Ticks{} || leap > kLongestGap) return false;
    if (time - origin_ <= length_ + kLengthSlack) return true;
    return other.started && GoesOn(other, time, by_dts);
}

// A splice leads all streams over to the new count by the same step, so that they stay together; a
// single broken time is left by the step that led to it.
Ticks SourceTimes::ShiftFor(const Clock& clock, const Clock& other, Ticks stamp, bool by_dts) {
    for (const Ticks shift : {clock.shift, other.shift, clock.last_shift})
        if (GoesOn(clock, stamp + shift, by_dts)) return shift;
    const Ticks time = stamp + clock.shift;
    const Ticks leap = time - clock.next;
    if (IsExplained(time, leap, other, by_dts)) return clock.shift;
    if (!first_leap_) first_leap_ = Leap{clock.next - origin_, leap};
    return clock.next - stamp;
}

void SourceTimes::Correct(MediaKind kind, PacketTimes& times) {
    const auto index = static_cast<std::size_t>(kind);
    Clock& clock = clocks_[index];
    const Clock& other = clocks_[1 - index];
    times.duration = std::clamp(times.duration, Ticks{}, kLongestGap);
    const std::optional<Ticks> stamp = times.dts ? times.dts : times.pts;
    if (!stamp) return;

    const Ticks bounded = BoundedTime(*stamp);
    const bool by_dts = times.dts.has_value();
    const Ticks shift = ShiftFor(clock, other, bounded, by_dts);
    if (shift != clock.shift) clock.last_shift = std::exchange(clock.shift, shift);
    const Ticks time = bounded + shift;
    // A length that leads where nothing is: the next packet says where it really comes.
    if (times.duration > kLeapForward && time + times.duration - origin_ > length_ + kLengthSlack)
        times.duration = {};
    clock.started = true;
    clock.by_dts = by_dts;
    clock.last = time;
    clock.next = time + times.duration;

    if (times.dts) times.dts = time;
    if (!times.pts) return;
    const Ticks pts = BoundedTime(*times.pts) + shift;
    const bool is_near = pts - time >= kLeapBack && pts - time <= kLeapForward;
    times.pts = is_near ? std::optional(pts) : std::nullopt;
}

}  // namespace engine
