// What every source owes to who ends it.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "engine/base/av/live_source.h"
#include "support/commands.h"

namespace test_support {

/// The source has nothing to give.
inline void ExpectWakeToEndReading(engine::LiveSource& source) {
    std::atomic<bool> reads{false};
    std::thread waker([&] {
        EXPECT_TRUE(Eventually([&] { return reads.load(); }));
        source.Wake();
    });
    engine::FrameHandle frame;
    reads = true;
    EXPECT_FALSE(source.Read(frame));
    waker.join();
    EXPECT_FALSE(source.Read(frame)) << "and every later one";
}

}  // namespace test_support
