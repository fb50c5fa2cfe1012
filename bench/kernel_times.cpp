// With --time this program prints how long each kernel takes instead of running the tests.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string_view>

#include "unit/codecs/wmv9/kernel_exercises.h"

using namespace codecs::wmv9;

namespace {

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

void PrintTimes() {
    fmt::print("Nanoseconds a call; those of the loop filter have the copying of the samples.\n");
    fmt::print("{:<18} {:<14}", "kernel", "call");
    for (const Kernels& kernels : AllKernels()) fmt::print("{:>9}", kernels.name);
    fmt::print("\n");
    for (const Exercise& exercise : Exercises())
        for (const auto& [label, variant] : exercise.timed) {
            fmt::print("{:<18} {:<14}", exercise.name, label);
            for (const Kernels& kernels : AllKernels())
                fmt::print("{:>9.1f}", TimeOf(kernels, exercise, variant));
            fmt::print("\n");
        }
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (argc > 1 && std::string_view(argv[1]) == "--time") {
        PrintTimes();
        return 0;
    }
    return RUN_ALL_TESTS();
}
