// Real clips through the writer: what players decode, when it is shown, where seeking lands.
#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <sstream>

#include "clips.h"
#include "support/asf_reader.h"

namespace {

constexpr const char* kVideo = "-f lavfi -i testsrc2=s=320x240:r=25:d=6";
constexpr const char* kAudio = "-f lavfi -i sine=440:r=44100:d=6";

/// The decoded frames of one kind ("v" or "a") as the ffmpeg command sees them.
std::string DecodedMd5(const std::string& path, const char* kind) {
    const std::string md5 = clips::OutputOf(fmt::format(
        "ffmpeg -v error -nostdin -i {} -map 0:{} -fps_mode passthrough -f md5 -", path, kind));
    EXPECT_TRUE(md5.starts_with("MD5=")) << md5;
    return md5;
}

std::vector<clips::Frame> VideoFrames(const clips::Clip& clip) {
    std::vector<clips::Frame> frames;
    for (const clips::Frame& frame : clip.frames)
        if (frame.stream == 1) frames.push_back(frame);
    return frames;
}

struct CodecRow {
    const char* name;
    const char* arguments;
    const char* extension;
    bool reordered;  // some frames are shown in another order than they are coded
};

class Codecs : public testing::TestWithParam<CodecRow> {
  protected:
    const clips::Folder folder_;
    const std::string source_ =
        clips::Ffmpeg(fmt::format("{} {} {} -shortest", kVideo, kAudio, GetParam().arguments),
                      folder_.Path(std::string("source.") + GetParam().extension));
    const clips::Clip clip_ = clips::Demux(source_);
    const std::string path_ = folder_.Path("written.wmv");
};

TEST_P(Codecs, DecodeAsTheSourceInPacketsOfAnySize) {
    const std::string video = DecodedMd5(source_, "v");
    const std::string audio = DecodedMd5(source_, "a");
    ASSERT_GT(clip_.frames.size(), 200U);
    EXPECT_EQ(std::any_of(clip_.frames.begin(), clip_.frames.end(),
                          [](const auto& f) { return f.pts != f.dts; }),
              GetParam().reordered);
    for (const std::uint32_t packet_bytes : {100U, 576U, 1400U, 3200U, 16000U, 64000U}) {
        SCOPED_TRACE(packet_bytes);
        clips::WriteFile(path_, clip_, packet_bytes);
        EXPECT_EQ(DecodedMd5(path_, "v"), video);
        EXPECT_EQ(DecodedMd5(path_, "a"), audio);
        const asf_reader::File file = asf_reader::ReadFile(path_);
        const auto preroll = static_cast<std::int64_t>(file.header.preroll_ms);
        ASSERT_EQ(file.objects.size(), clip_.frames.size());
        for (std::size_t i = 0; i < clip_.frames.size(); ++i)
            EXPECT_EQ(file.objects[i].presentation_ms - preroll,
                      (clip_.frames[i].pts.count + 5000) / 10000);
    }
}

TEST_P(Codecs, SeekLandsOnTheKeyFrameBefore) {
    clips::WriteFile(path_, clip_, 1400);
    const std::vector<clips::Frame> frames = VideoFrames(clip_);
    for (int second = 0; second < 6; ++second) {
        SCOPED_TRACE(second);
        const clips::Frame* expected = &frames.front();
        for (const clips::Frame& frame : frames)
            if (frame.key && frame.pts.Milliseconds() <= second * 1000) expected = &frame;
        std::vector<clips::ReadBack> read = clips::ReadWithLibavformat(path_, second * 1000, 50);
        const auto first =
            std::find_if(read.begin(), read.end(), [](const auto& f) { return f.stream == 1; });
        ASSERT_NE(first, read.end());
        EXPECT_TRUE(first->key);
        EXPECT_EQ(first->bytes, expected->bytes);
    }
}

// When players show the frames, in milliseconds.
std::vector<std::int64_t> ShownAt(const std::string& path) {
    std::istringstream lines(
        test_support::RunCommand({"ffprobe", "-v", "error", "-select_streams", "v", "-show_frames",
                                  "-show_entries", "frame=best_effort_timestamp_time", "-of",
                                  "csv=p=0", path})
            .out);
    std::vector<std::int64_t> times;
    for (std::string line; std::getline(lines, line);)
        times.push_back(line.starts_with("N/A") ? -1 : std::llround(std::stod(line) * 1000));
    return times;
}

TEST(Reordered, FramesAreShownAtTheirTimes) {
    const clips::Folder scratch;
    // Uneven times: every seventh frame is missing.
    const std::string source = clips::Ffmpeg(
        fmt::format("{} -vf \"select='mod(n,7)'\" -fps_mode vfr -c:v mpeg4 -bf 2 -g 24", kVideo),
        scratch.Path("source.mkv"));
    clips::Clip clip = clips::Demux(source);
    clip.header.streams.at(0).reordered = true;
    std::vector<std::int64_t> expected;
    for (const clips::Frame& frame : clip.frames)
        expected.push_back((frame.pts.count + 5000) / 10000);
    EXPECT_FALSE(std::is_sorted(expected.begin(), expected.end()));
    std::sort(expected.begin(), expected.end());
    const std::string path = scratch.Path("written.wmv");
    clips::WriteFile(path, clip, 1400);
    std::vector<std::int64_t> shown = ShownAt(path);
    ASSERT_EQ(shown.size(), expected.size());
    EXPECT_EQ(shown.back(), -1) << "nothing comes after it that could bring it its time";
    shown.pop_back();
    expected.pop_back();
    EXPECT_EQ(shown, expected);
    EXPECT_EQ(test_support::DecodeMessages(path), "");
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Clips, Codecs, testing::Values(
    //       name             arguments                                                       source reordered
    CodecRow{"WindowsMedia",  "-c:v wmv2 -b:v 300k -g 50 -c:a wmav2 -b:a 64k",                "asf", false},
    CodecRow{"BFrames",       "-c:v mpeg4 -bf 2 -g 24 -b:v 400k -c:a wmav2 -b:a 64k",         "mkv", true},
    CodecRow{"Uncompressed",  "-c:v rawvideo -vf scale=64:48 -pix_fmt bgr24 -c:a pcm_s16le",  "avi", false}),
    [](const auto& row) { return std::string(row.param.name); });
// clang-format on

}  // namespace
