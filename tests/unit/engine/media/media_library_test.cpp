// The seam to the media library: loading it from several threads.
#include "engine/media/media_library.h"

#include <barrier>
#include <set>
#include <thread>

namespace engine {
namespace {

TEST(MediaLibrary, IsTheSameForThreadsThatAskAtOnce) {
    constexpr std::size_t kThreads = 8;
    std::barrier start(kThreads);
    std::vector<const MediaParts*> found(kThreads);
    std::vector<std::thread> threads;
    for (const MediaParts*& parts : found)
        threads.emplace_back([&start, &parts] {
            start.arrive_and_wait();
            parts = &MediaLibrary();
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(std::set(found.begin(), found.end()).size(), 1U);
    EXPECT_NE(found.front()->probe, nullptr);
}

}  // namespace
}  // namespace engine
