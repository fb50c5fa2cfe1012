// Media time: a count of 100 ns, the container's unit.
#pragma once

#include <compare>
#include <cstdint>

namespace engine {

struct Ticks {
    std::int64_t count = 0;

    static constexpr std::int64_t kPerSecond = 10'000'000;
    static constexpr std::int64_t kPerMillisecond = 10'000;

    static constexpr Ticks FromMilliseconds(std::int64_t ms) { return {ms * kPerMillisecond}; }
    constexpr std::int64_t Milliseconds() const { return count / kPerMillisecond; }  // towards 0
    constexpr double Seconds() const { return static_cast<double>(count) / kPerSecond; }

    // clang-tidy 14 takes the defaulted operator for a null pointer.
    constexpr auto operator<=>(const Ticks&) const = default;  // NOLINT(modernize-use-nullptr)
    constexpr Ticks operator+(Ticks other) const { return {count + other.count}; }
    constexpr Ticks operator-(Ticks other) const { return {count - other.count}; }
    constexpr Ticks& operator+=(Ticks other) {
        count += other.count;
        return *this;
    }
};

}  // namespace engine
