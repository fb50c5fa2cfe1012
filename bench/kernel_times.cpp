// Prints how long each kernel of the encoder of Windows Media Video 9 takes, on the calls that its
// tests make. The figures mean something in a release build only.
#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <string_view>

#include "unit/codecs/wmv9/kernel_exercises.h"

using namespace codecs::wmv9;

namespace {

/// A typical call.
struct Timed {
    std::string_view exercise;
    const char* label;
    Variant variant;
};

constexpr Variant kSmall = {.width = 8, .height = 8};

// clang-format off
const Timed kTimed[] = {
    // exercise           call             variant
    {"sad",               "16x16",         {}},
    {"sad",               "8x8",           kSmall},
    {"sad_of_four",       "16x16",         {}},
    {"squared",           "16x16",         {}},
    {"squared",           "8x8",           kSmall},
    {"hadamard",          "16x16",         {}},
    {"hadamard",          "8x8",           kSmall},
    {"moments",           "16x16",         {}},
    {"bicubic",           "16x16, whole",  {}},
    {"bicubic",           "16x16 at 1,0",  {.x = 1}},
    {"bicubic",           "16x16 at 2,0",  {.x = 2}},
    {"bicubic",           "16x16 at 0,1",  {.y = 1}},
    {"bicubic",           "16x16 at 0,2",  {.y = 2}},
    {"bicubic",           "16x16 at 1,1",  {.x = 1, .y = 1}},
    {"bicubic",           "16x16 at 2,2",  {.x = 2, .y = 2}},
    {"bicubic",           "8x8 at 1,3",    {.width = 8, .height = 8, .x = 1, .y = 3}},
    {"bilinear",          "16x16 at 2,0",  {.x = 2}},
    {"bilinear",          "16x16 at 2,2",  {.x = 2, .y = 2}},
    {"chroma",            "8x8 at 1,3",    {.width = 8, .height = 8, .x = 1, .y = 3}},
    {"average",           "16x16",         {}},
    {"subtract",          "8x8",           kSmall},
    {"forward",           "8x8",           {}},
    {"forward",           "8x4",           {.shape = Shape::Wide8x4}},
    {"forward",           "4x8",           {.shape = Shape::Tall4x8}},
    {"forward",           "4x4",           {.shape = Shape::Small4x4}},
    {"inverse",           "8x8",           {}},
    {"inverse",           "8x4",           {.shape = Shape::Wide8x4}},
    {"inverse",           "4x8",           {.shape = Shape::Tall4x8}},
    {"inverse",           "4x4",           {.shape = Shape::Small4x4}},
    {"add",               "8x8",           kSmall},
    {"put",               "8x8",           kSmall},
    {"quantise",          "8x8",           kSmall},
    {"restore",           "8x8",           kSmall},
    {"filter_horizontal", "16 segments",   {}},
    {"filter_vertical",   "16 segments",   {}},
};
// clang-format on

// The shortest of some measurements, in nanoseconds a call.
double TimeOf(const Kernels& kernels, const Exercise& exercise, const Variant& variant) {
    using Clock = std::chrono::steady_clock;
    constexpr int kCalls = 20'000;
    Scene scene = exercise.scene(variant, Content::Seams, 5);
    double shortest = 1e9;
    for (int round = 0; round < 7; ++round) {
        const Clock::time_point start = Clock::now();
        for (int i = 0; i < kCalls; ++i) exercise.run(kernels, variant, scene);
        const std::chrono::duration<double, std::nano> time = Clock::now() - start;
        shortest = std::min(shortest, time.count() / kCalls);
    }
    return shortest;
}

}  // namespace

int main() {
    fmt::print("Nanoseconds a call; those of the loop filter have the copying of the samples.\n");
    fmt::print("{:<18} {:<14}", "kernel", "call");
    for (const Kernels& kernels : AllKernels()) fmt::print("{:>9}", kernels.name);
    fmt::print("\n");
    for (const Timed& timed : kTimed) {
        const auto exercise = std::ranges::find(Exercises(), timed.exercise, &Exercise::name);
        fmt::print("{:<18} {:<14}", timed.exercise, timed.label);
        for (const Kernels& kernels : AllKernels())
            fmt::print("{:>9.1f}", TimeOf(kernels, *exercise, timed.variant));
        fmt::print("\n");
    }
}
