// A file that was looked at is read on as it was opened then, unless it is no longer what it was.
#include "engine/sources/files/kept_media.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "engine/sources/files/file_reader.h"
#include "engine/sources/files/media_probe.h"
#include "support/clips.h"

namespace engine {
namespace {

namespace fs = std::filesystem;

std::string Clip(const clips::Folder& folder, const std::string& name, int width) {
    return clips::Ffmpeg(
        "-f lavfi -i testsrc2=s=" + std::to_string(width) + "x48:r=10:d=3 -c:v libx264 -g 10",
        folder.Path(name));
}

InputPlan From(const std::string& path, int mark_in_ms) {
    InputPlan input;
    input.path = path;
    input.mark_in = Ticks::FromMilliseconds(mark_in_ms);
    return input;
}

// Of all packets that a reader gives.
std::vector<std::int64_t> Times(const InputPlan& input) {
    PacketPool packets;
    PacketRouter router;
    router.Cancel(MediaKind::Audio);
    FileReader reader(input, false, true, packets);
    reader.Run(router);
    std::vector<std::int64_t> times;
    for (PacketHandle packet; router.Pop(MediaKind::Video, packet);) times.push_back(packet->dts);
    return times;
}

TEST(KeptMedia, IsReadLikeOneThatIsOpened) {
    const clips::Folder folder;
    const std::string path = Clip(folder, "clip.mp4", 64);
    for (const int mark_in_ms : {0, 300, 1700}) {
        const InputPlan input = From(path, mark_in_ms);
        const std::vector<std::int64_t> opened = Times(input);
        ProbeMediaFile(path);
        EXPECT_EQ(Times(input), opened) << mark_in_ms;
        EXPECT_FALSE(TakeKeptMedia(path)) << mark_in_ms;  // it is read once
    }
}

TEST(KeptMedia, IsNotReadOnceTheFileIsAnother) {
    const clips::Folder folder;
    const std::string path = Clip(folder, "clip.mp4", 64);
    const std::string other = Clip(folder, "other.mp4", 96);
    PacketPool packets;
    ProbeMediaFile(path);
    EXPECT_EQ(
        FileReader(From(other, 0), false, true, packets).Stream(MediaKind::Video).codecpar->width,
        96);
    ProbeMediaFile(path);
    fs::rename(other, path);
    EXPECT_EQ(
        FileReader(From(path, 0), false, true, packets).Stream(MediaKind::Video).codecpar->width,
        96);
}

}  // namespace
}  // namespace engine
