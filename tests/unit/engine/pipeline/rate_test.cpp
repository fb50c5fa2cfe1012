// What rates and buffers cost: dropped frames rather than broken promises, and no burst that
// overruns a buffer.
#include <algorithm>
#include <stdexcept>

#include "support/asf_reader.h"
#include "unit/engine/pipeline/encode_table.h"

namespace {

using namespace engine;
using platform::VbrMode;

using Rates = EncodeTable;

// Whether Windows Media Video 9 may have B pictures: bits 25 to 27 of its sequence
// header say how many.
bool IsReordered(const asf_reader::StreamProperties& stream) {
    return stream.four_cc == "WMV3" && (stream.extra_data.at(3) >> 4 & 7) != 0;
}

/// What a buffer that drains at `rate_bps` has held of the file's pictures at most, in bits, by its
/// packets alone. That it is no more than its size also bounds the bits of every stretch of time:
/// to what drains in it and once the size. The file has one video stream.
double FullestBucket(const std::string& file, double rate_bps) {
    const asf_reader::File read = asf_reader::ReadFile(file);
    const auto stream = std::find_if(read.header.streams.begin(), read.header.streams.end(),
                                     [](const auto& row) { return !row.audio; });
    if (stream == read.header.streams.end()) throw std::runtime_error("no pictures in " + file);
    double level = 0;
    double fullest = 0;
    double before = 0;  // milliseconds
    for (std::size_t i = 0; i < read.objects.size(); ++i) {
        const asf_reader::MediaObject& picture = read.objects[i];
        if (picture.stream != stream->number) continue;
        double now = picture.presentation_ms;
        // A player keeps one back, so the time that is written is that of the picture before; a
        // key picture's own is written with the one after it.
        if (picture.key && IsReordered(*stream) && i + 1 < read.objects.size())
            now = std::max<double>(now, read.objects[i + 1].presentation_ms);
        level = std::max(0.0, level - (now - before) / 1000 * rate_bps);
        level += 8.0 * static_cast<double>(picture.bytes.size());
        fullest = std::max(fullest, level);
        before = now;
    }
    return fullest;
}

const std::pair<const char*, int> kEncodersInPasses[] = {
    {"wmv2", 1}, {"wmv2", 2}, {"wmv3", 1}, {"wmv3", 2}};

// The encoder drops what it cannot afford rather than break the rate.
TEST_F(Rates, ARateFarTooLowCostsFramesNotBits) {
    constexpr int kRate = 10'000;
    for (const auto& [encoder, passes] : kEncodersInPasses) {
        SCOPED_TRACE(testing::Message() << encoder << " in " << passes);
        EncodePlan plan = session::OfVideo(source_, folder_->Path("low.wmv"), encoder);
        plan.passes = passes;
        plan.video->performance = 0;
        plan.video->bit_rate_bps = kRate;
        plan.video->buffer_ms = 1000;
        const session::Outcome outcome = session::RunCleanly(plan);
        EXPECT_EQ(clips::DecodeMessages(plan.FilePath()), "");
        EXPECT_GT(outcome.video.dropped_sample_count.Raw(), 20);
        EXPECT_GT(outcome.video.dropped_byte_count.Raw(), 0);
        EXPECT_EQ(outcome.video.dropped_sample_count.Raw() + outcome.video.sample_count.Raw(),
                  kFrames);
        // One frame may fill the buffer once.
        EXPECT_LT(static_cast<double>(outcome.video.byte_count.Raw()) * 8,
                  kRate * kSeconds * 1.1 + 60'000);
    }
}

// With B pictures, what is dropped after a first picture that fills the buffer lets it drain.
TEST_F(Rates, FramesFollowAFirstPictureThatFillsTheBuffer) {
    EncodePlan plan = session::OfVideo(source_, folder_->Path("first.wmv"), "wmv3");
    plan.video->performance = 60;
    plan.video->bit_rate_bps = 12'000;
    plan.video->buffer_ms = 300;
    const session::Outcome outcome = session::RunCleanly(plan);
    EXPECT_EQ(clips::DecodeMessages(plan.FilePath()), "");
    EXPECT_GT(outcome.video.dropped_sample_count.Raw(), 0);
    EXPECT_GT(outcome.video.sample_count.Raw(), kFrames / 2);
}

// The header says 25 frames a second, the clip has about four.
TEST_F(Rates, TheRateGoesByTimeNotByFrames) {
    const std::string sparse = clips::Ffmpeg(
        "-stream_loop 4 -i " + source_ +
            " -an -vf \"select=not(mod(n\\,6))\" -vsync vfr -r 25 -enc_time_base 1/25 "
            "-c:v mpeg4 -q:v 2",
        folder_->Path("sparse.mkv"));
    for (const auto& [encoder, passes] : kEncodersInPasses) {
        SCOPED_TRACE(testing::Message() << encoder << " in " << passes);
        EncodePlan plan = session::OfVideo(sparse, folder_->Path("sparse.wmv"), encoder);
        plan.passes = passes;
        plan.video->expected_rate = 25000;
        plan.video->performance = 0;
        plan.video->bit_rate_bps = 200'000;
        const session::Outcome outcome = session::RunCleanly(plan);
        EXPECT_NEAR(outcome.video.average_bit_rate_bps, 200'000, 20'000);
    }
}

// At the same rate, what better choices give shows in the frames.
TEST_F(Rates, PerformanceBuysQuality) {
    for (const char* encoder : {"wmv2", "mpeg4"}) {
        SCOPED_TRACE(encoder);
        double psnr[2] = {};
        for (const bool best : {false, true}) {
            EncodePlan plan = session::OfVideo(source_, folder_->Path("out.wmv"), encoder);
            plan.video->mode = VbrMode::BitRate;
            plan.passes = 2;  // the same rate to a hair
            plan.video->bit_rate_bps = 300'000;
            plan.video->performance = best ? 100 : 0;
            session::RunCleanly(plan);
            psnr[best ? 1 : 0] = clips::Psnr(plan.FilePath(), source_, "null", "yuv420p");
        }
        EXPECT_GT(psnr[1], psnr[0] + 0.05);
    }
}

TEST_F(Rates, TheBufferBoundsEveryStretch) {
    const std::string bursts = clips::Ffmpeg(
        "-f lavfi -i testsrc2=s=320x240:r=25,noise=alls=40:allf=t:enable='gt(mod(t\\,4)\\,3)' "
        "-t 8 -c:v mpeg4 -q:v 2",
        folder_->Path("bursts.avi"));
    for (const auto& [encoder, passes] : kEncodersInPasses) {
        double most[2] = {};
        for (const int buffer_ms : {500, 3000}) {
            SCOPED_TRACE(testing::Message()
                         << encoder << ", " << passes << " passes, " << buffer_ms << " ms");
            EncodePlan plan = session::OfVideo(bursts, folder_->Path("out.wmv"), encoder);
            plan.passes = passes;
            plan.video->performance = 0;
            plan.video->bit_rate_bps = 600'000;
            plan.video->buffer_ms = buffer_ms;
            session::RunCleanly(plan);
            double& filled = most[buffer_ms > 500 ? 1 : 0];
            filled = FullestBucket(plan.FilePath(), 600'000);
            EXPECT_LE(filled, 600.0 * buffer_ms);
        }
        // What the buffer allows is used: for a group's own bursts in one pass, for those of the
        // whole in two.
        EXPECT_GT(most[1], most[0] * (passes == 1 ? 1.2 : 1.8));
    }
}

// Of our own encoder in every mode that has one, with B pictures, after stills.
TEST_F(Rates, NoBurstOverrunsTheBufferOrThePeak) {
    const std::string bursts = clips::Ffmpeg(
        "-f lavfi -i color=gray:s=160x120:r=25,noise=alls=90:allf=t:enable='gt(mod(t\\,4)\\,3)' "
        "-t 8 -c:v mpeg4 -q:v 2",
        folder_->Path("noise.avi"));
    struct Case {
        const char* why;
        VbrMode mode;
        int passes;
        int key_distance_ms;
        double drain_bps, bucket_bits;
        std::int64_t level_rate_bps;
    };
    // clang-format off
    const Case cases[] = {
        // why                        mode               passes keys  drain    bucket   level
        {"constant",                  VbrMode::Constant, 1,     8000, 100'000, 100'000, 0},
        {"constant, many keys",       VbrMode::Constant, 1,     4000, 100'000, 100'000, 0},
        {"constant, planned",         VbrMode::Constant, 2,     8000, 100'000, 100'000, 0},
        {"peak",                      VbrMode::Peak,     2,     2000, 200'000, 100'000, 0},
        {"a device with a quality",   VbrMode::Quality,  1,     2000, 125'000, 100'000, 125'000},
    };
    // clang-format on
    for (const Case& row : cases) {
        SCOPED_TRACE(row.why);
        EncodePlan plan = session::OfVideo(bursts, folder_->Path("bursts.wmv"));
        plan.passes = row.passes;
        VideoPlan& video = *plan.video;
        video.codec = &session::VideoCodec("wmv3");
        video.mode = row.mode;
        video.performance = 40;  // with B pictures
        video.bit_rate_bps = 100'000;
        video.buffer_ms = 1000;
        video.peak_rate_bps = 200'000;
        video.peak_buffer_ms = 500;
        video.key_frame_distance_ms = row.key_distance_ms;
        video.level_rate_bps = row.level_rate_bps;
        video.level_buffer_bits = row.level_rate_bps > 0 ? 100'000 : 0;
        const session::Outcome outcome = session::RunCleanly(plan);
        EXPECT_EQ(clips::DecodeMessages(plan.FilePath()), "");
        const double fullest = FullestBucket(plan.FilePath(), row.drain_bps);
        EXPECT_LE(fullest, row.bucket_bits);
        EXPECT_GT(fullest, row.bucket_bits / 2) << "the bursts were none";
        EXPECT_EQ(outcome.video.dropped_sample_count.Raw() + outcome.video.sample_count.Raw(), 200);
    }
}

TEST_F(Rates, KeyFramesComeByTime) {
    for (const int distance_ms : {500, 2000}) {
        EncodePlan plan = session::OfVideo(source_, folder_->Path("keys.wmv"));
        plan.video->key_frame_distance_ms = distance_ms;
        session::RunCleanly(plan);
        const std::vector<double> keys = clips::Decode(plan.FilePath()).key_times;
        ASSERT_FALSE(keys.empty());
        EXPECT_GE(keys.size(), static_cast<std::size_t>(1000 * kSeconds / distance_ms) - 1);
        for (std::size_t i = 1; i < keys.size(); ++i)
            EXPECT_LE(keys[i] - keys[i - 1], distance_ms / 1000.0 + 0.041);
    }
}

}  // namespace
