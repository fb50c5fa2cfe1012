// Calls of every kernel on extremes and noise, for comparing sets of kernels and for timing them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "codecs/wmv9/kernels.h"

/// How a call is made; a kernel uses what its parameters need.
struct Variant {
    int width = 16;
    int height = 16;
    int x = 0;  ///< of a position
    int y = 0;
    int rounding = 0;
    codecs::wmv9::Shape shape = codecs::wmv9::Shape::Whole8x8;
    int quantiser = 8;
    int count = 16;  ///< of segments

    std::string Name() const;
};

/// Samples around a block.
struct Margins {
    int left = 0;
    int right = 0;
    int above = 0;
    int below = 0;
};

struct Area {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

enum class Content { Noise, Extremes, Checkers, Peaks, Black, White, Ramp, Seams };
inline constexpr Content kContents[] = {Content::Noise, Content::Extremes, Content::Checkers,
                                        Content::Peaks, Content::Black,    Content::White,
                                        Content::Ramp,  Content::Seams};

/// Samples in memory that ends right behind the last of them, so that a sanitizer sees a read or
/// write beyond; where they begin is aligned to nothing.
class Plane {
  public:
    Plane(int width, int height, Margins margins, Content content, unsigned seed);
    std::uint8_t* At() { return samples_.data() + origin_; }
    const std::uint8_t* At() const { return samples_.data() + origin_; }
    std::ptrdiff_t Stride() const { return stride_; }
    /// Nothing but this part is different; places are of the block.
    bool IsSameAround(const Plane& other, const Area& part) const;
    bool operator==(const Plane&) const = default;

  private:
    std::vector<std::uint8_t> samples_;
    std::ptrdiff_t stride_;
    std::size_t origin_;
};

struct Block {
    alignas(32) std::int16_t values[64] = {};
    bool operator==(const Block&) const = default;
};

/// What a call reads, and all that it changes.
struct Scene {
    Plane a;
    std::vector<Plane> b;  ///< four, of one stride
    Plane out;
    Area changed;  ///< of `out`, at most
    Block in;
    std::vector<std::uint8_t> segments;
    Block result;
    std::uint32_t numbers[4] = {};
};

struct Exercise {
    const char* name;
    std::vector<Variant> (*variants)();
    Scene (*scene)(const Variant& variant, Content content, unsigned seed);
    void (*run)(const codecs::wmv9::Kernels& kernels, const Variant& variant, Scene& scene);
};

const std::vector<Exercise>& Exercises();
