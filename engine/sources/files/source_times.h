// What the timestamps of a source may do: one rule for every demuxer. A stream's times go on from
// packet to packet; where they leap although nothing explains it, they are counted on as if the
// leap were not there.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "engine/base/stream_header.h"
#include "engine/base/ticks.h"

namespace engine {

/// A packet's times as its container has them; absent where it says nothing.
struct PacketTimes {
    std::optional<Ticks> pts;
    std::optional<Ticks> dts;
    Ticks duration;
};

/// One thread, packets of all streams in the order of the file.
class SourceTimes {
  public:
    /// A time further from 0 than this is not one: sums of a few stay far from an overflow.
    static constexpr Ticks kFarthest{std::int64_t{1} << 60};

    /// @param origin      the source's first time
    /// @param begin       where it is read from, at the latest: the origin, but for a seek
    /// @param length      as the container states or promises it; 0 = it does not say
    /// @param is_spliced  the container is one whose time may begin anew anywhere
    SourceTimes(Ticks origin, Ticks begin, Ticks length, bool is_spliced);

    /// Counts the packet's times on where they leap, leaves them as they are everywhere else.
    void Correct(MediaKind kind, PacketTimes& times);

    /// The first leap that was taken out; where in the source (from its origin) and how far it led.
    struct Leap {
        Ticks at;
        Ticks by;
    };
    const std::optional<Leap>& FirstLeap() const { return first_leap_; }
    /// When the stream's last packet began, as corrected.
    Ticks Last(MediaKind kind) const { return clocks_[static_cast<std::size_t>(kind)].last; }

  private:
    struct Clock {
        bool started = false;
        bool by_dts = false;  // what the last packet's time was taken from
        Ticks last;           // where the last packet began
        Ticks next;           // where the next one is expected
        Ticks shift;          // added to the stream's times since its last leap
        Ticks last_shift;     // before that
    };

    static bool GoesOn(const Clock& clock, Ticks time, bool by_dts);
    bool IsExplained(Ticks time, Ticks leap, const Clock& other, bool by_dts) const;
    Ticks ShiftFor(const Clock& clock, const Clock& other, Ticks stamp, bool by_dts);

    Ticks origin_;
    Ticks length_;
    bool is_spliced_;
    std::array<Clock, 2> clocks_;  // audio, video
    std::optional<Leap> first_leap_;
};

/// A number of a container as a time: what lies further from 0 than any film is cut.
Ticks BoundedTime(Ticks time);

}  // namespace engine
