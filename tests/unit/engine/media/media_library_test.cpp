// The seam to the media library: loading it from several threads, and what passes through it.
#include "engine/media/media_library.h"

#include <barrier>
#include <set>
#include <thread>

#include "support/commands.h"
#include "support/error_of.h"

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

// An error thrown inside is caught by its type outside, and a record made inside is freed outside.
TEST(MediaLibrary, ErrorsAndRecordsPassThrough) {
    const test_support::TempFolder folder;
    const std::string missing = folder / "missing.avi";
    EXPECT_EQ(test_support::ErrorNumber([&] { MediaLibrary().probe(missing); }, {missing}),
              platform::kFileNotFound);
    test_support::Ffmpeg({"-f", "lavfi", "-i", "testsrc=s=64x48:r=10:d=1", folder / "clip.avi"});
    const MediaFileInfo info = MediaLibrary().probe(folder / "clip.avi");
    ASSERT_TRUE(info.video.has_value());
    EXPECT_EQ(info.video->width, 64);
}

}  // namespace
}  // namespace engine
