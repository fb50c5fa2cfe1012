// Numbers that follow from a seed alone, whatever thread asks and in whatever order.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <sstream>

namespace wmv9_conformance {

class Random {
  public:
    template <typename... Places>
    explicit Random(std::uint64_t seed, Places... places) : state_(seed) {
        (Mix(static_cast<std::uint64_t>(places)), ...);
    }

    /// 0 to `count` - 1.
    int Below(int count) { return static_cast<int>(Next() >> 33U) % count; }
    int Between(int least, int largest) { return least + Below(largest - least + 1); }
    bool Roll(int percent) { return Below(100) < percent; }
    template <typename T, std::size_t Size>
    T Pick(const T (&from)[Size]) {
        return from[Below(static_cast<int>(Size))];
    }
    std::uint64_t Next() {
        state_ += 0x9E3779B97F4A7C15U;
        std::uint64_t mixed = state_;
        mixed = (mixed ^ mixed >> 30U) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ mixed >> 27U) * 0x94D049BB133111EBU;
        return mixed ^ mixed >> 31U;
    }

  private:
    void Mix(std::uint64_t place) { state_ = Next() ^ place; }

    std::uint64_t state_;
};

/// The numbers of what a test makes at random: FIRST and COUNT of TESSIVO_SEEDS="FIRST COUNT", else
/// the `usual` first ones.
struct Seeds {
    explicit Seeds(std::uint64_t usual) : count(usual) {
        if (const char* asked = std::getenv("TESSIVO_SEEDS"))
            std::istringstream(asked) >> first >> count;
    }
    std::uint64_t first = 0;
    std::uint64_t count;
};

}  // namespace wmv9_conformance
