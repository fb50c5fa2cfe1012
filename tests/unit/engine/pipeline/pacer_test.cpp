// When the frames of a file that is streamed are let go.
#include "engine/pipeline/pacer.h"

#include <atomic>
#include <thread>

namespace {

using engine::Pacer;
using engine::Ticks;

constexpr Ticks kLater = Ticks::FromMilliseconds(3'600'000);

TEST(Pacer, WhatIsNotDueYetIsGivenUpWhenTheRunStops) {
    Pacer pacer;
    EXPECT_TRUE(pacer.Await(Ticks::FromMilliseconds(500))) << "the first one starts the clock";
    EXPECT_TRUE(pacer.Await(Ticks::FromMilliseconds(400))) << "is late already";
    std::thread stop([&] { pacer.Stop(); });
    EXPECT_FALSE(pacer.Await(kLater));
    stop.join();
    EXPECT_TRUE(pacer.Await(Ticks::FromMilliseconds(500))) << "was due before";
}

TEST(Pacer, NothingPassesDuringAPause) {
    Pacer pacer;
    EXPECT_TRUE(pacer.Await({}));
    pacer.SetPaused(true);
    std::atomic<bool> passed{false};
    std::atomic<bool> resumed{false};
    bool in_order = false;
    std::thread writer([&] {
        passed = pacer.Await({});
        in_order = resumed;
    });
    pacer.SetPaused(true);
    resumed = true;
    pacer.SetPaused(false);
    writer.join();
    EXPECT_TRUE(passed);
    EXPECT_TRUE(in_order);
}

}  // namespace
