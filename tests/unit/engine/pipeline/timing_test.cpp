// What happens when in a source happens then in the file: audio and video together, cut at the
// marks, of any length, still or telecined.
#include <gtest/gtest.h>

#include <cmath>

#include "support/clips.h"
#include "unit/engine/pipeline/session.h"

namespace {

using namespace engine;

// A white frame and a click at each even second.
std::string FlashAndClick(const clips::Folder& folder, const char* coding, const char* name) {
    return clips::Ffmpeg(
        std::string("-f lavfi -i \"color=black:s=160x120:r=25,geq=lum='if(lt(mod(N,50),1),235,16)':"
                    "cb=128:cr=128\" -f lavfi -i \"aevalsrc='if(lt(mod(t,2),0.002),0.9,0)':s=44100,"
                    "aformat=channel_layouts=stereo\" -t 9 ") +
            coding,
        folder.Path(name));
}

struct SyncCase {
    const char* why;
    const char* coding;
    const char* name;
    const char* audio_encoder;
    AudioFormat format;
    int mark_in_ms, mark_out_ms;
    std::vector<double> events;  // seconds
};

// clang-format off
const SyncCase kSyncCases[] = {
    // why                            source's coding                                 name     audio        format                   marks       events
    {"as it is, coded audio",         "-c:v mpeg4 -g 10 -q:v 3 -c:a pcm_s16le",        "a.avi", "wmav2",     {64000, 44100, 2, 16},   0, 0,       {0, 2, 4, 6, 8}},
    {"as it is, PCM",                 "-c:v mpeg4 -g 10 -q:v 3 -c:a pcm_s16le",        "a.avi", "pcm_s16le", {1411200, 44100, 2, 16}, 0, 0,       {0, 2, 4, 6, 8}},
    {"resampled, short frames",       "-c:v mpeg4 -g 10 -q:v 3 -c:a pcm_s16le",        "a.avi", "wmav2",     {32000, 16000, 1, 16},   0, 0,       {0, 2, 4, 6, 8}},
    {"professional audio",            "-c:v mpeg4 -g 10 -q:v 3 -c:a pcm_s16le",        "a.avi", "wmapro",    {128000, 44100, 2, 16},  0, 0,       {0, 2, 4, 6, 8}},
    {"voice",                         "-c:v mpeg4 -g 10 -q:v 3 -c:a pcm_s16le",        "a.avi", "wmavoice",  {20000, 22050, 1, 16},   0, 0,       {0, 2, 4, 6, 8}},
    {"voice between marks",           "-c:v mpeg4 -g 100 -q:v 3 -c:a pcm_s16le",       "d.avi", "wmavoice",  {16000, 16000, 1, 16},   1000, 6500, {1, 3, 5}},
    {"B-frames, delayed audio",      "-c:v mpeg4 -bf 2 -g 50 -q:v 3 -c:a aac",        "b.mp4", "wmav2",     {64000, 44100, 2, 16},   0, 0,       {0, 2, 4, 6, 8}},
    {"times that start elsewhere",    "-c:v mpeg2video -bf 2 -q:v 3 -c:a mp2",         "c.ts",  "wmav2",     {64000, 44100, 2, 16},   0, 0,       {0, 2, 4, 6, 8}},
    {"marks between key frames",      "-c:v mpeg4 -g 100 -q:v 3 -c:a pcm_s16le",       "d.avi", "wmav2",     {64000, 44100, 2, 16},   1000, 6500, {1, 3, 5}},
    {"marks, delays, few key frames", "-c:v mpeg4 -bf 2 -g 100 -q:v 3 -c:a aac",       "e.mp4", "pcm_s16le", {1411200, 44100, 2, 16}, 3000, 7000, {1, 3}},
    {"marks without an index",        "-c:v mpeg2video -bf 2 -g 100 -q:v 3 -c:a mp2",  "f.ts",  "wmav2",     {64000, 44100, 2, 16},   3000, 0,    {1, 3, 5}},
};
// clang-format on

TEST(Timing, AudioAndVideoStayTogether) {
    const clips::Folder folder;
    for (const SyncCase& row : kSyncCases) {
        SCOPED_TRACE(row.why);
        const std::string source = FlashAndClick(folder, row.coding, row.name);
        EncodePlan plan = session::OfAudio(source, folder.Path("out.wmv"));
        plan.audio->codec = &session::AudioCodec(row.audio_encoder);
        plan.audio->format = row.format;
        plan.video = session::Video(source);
        for (InputPlan* input : {&plan.audio->input, &plan.video->input}) {
            input->mark_in = Ticks::FromMilliseconds(row.mark_in_ms);
            input->mark_out = Ticks::FromMilliseconds(row.mark_out_ms);
        }
        session::RunCleanly(plan);
        const clips::Contents contents = clips::Decode(plan.FilePath());
        const std::vector<double> flashes = clips::Flashes(contents);
        const std::vector<double> clicks = clips::Clicks(contents);
        ASSERT_EQ(flashes.size(), row.events.size());
        ASSERT_EQ(clicks.size(), row.events.size());
        for (std::size_t i = 0; i < row.events.size(); ++i) {
            // A source's own containers may set audio and video up to a frame apart.
            EXPECT_NEAR(flashes[i], row.events[i], 0.035);
            EXPECT_NEAR(clicks[i], row.events[i], 0.035);
            EXPECT_NEAR(flashes[i] - flashes[0], row.events[i] - row.events[0], 0.003);
            EXPECT_NEAR(clicks[i] - flashes[i], 0, 0.010);
        }
        const double end = row.mark_out_ms > 0 ? row.mark_out_ms / 1000.0 : 9.0;
        EXPECT_NEAR(contents.duration, end - row.mark_in_ms / 1000.0, 0.06);
    }
}

struct LengthCase {
    const char* why;
    const char* source;  // of one file with both streams
    double audio, video;
    std::size_t frames;
};

// clang-format off
const LengthCase kLengthCases[] = {
    // why                         source                                                                                                   audio video frames
    {"audio goes on longer",       "-f lavfi -i testsrc2=s=160x120:r=25:d=2 -f lavfi -i sine=d=8 -c:v mpeg4 -c:a pcm_s16le",                8,    2,      50},
    {"video goes on longer",       "-f lavfi -i testsrc2=s=160x120:r=25:d=8 -f lavfi -i sine=d=2 -c:v mpeg4 -c:a pcm_s16le",                2,    8,      200},
    {"one frame, much audio",    "-f lavfi -i testsrc2=s=160x120:r=25:d=0.04 -f lavfi -i sine=d=400 -c:v mpeg4 -c:a pcm_s16le",           400,  0.04,   1},
};
// clang-format on

TEST(Timing, StreamsEndEachByItself) {
    const clips::Folder folder;
    for (const LengthCase& row : kLengthCases) {
        SCOPED_TRACE(row.why);
        const std::string source = clips::Ffmpeg(row.source, folder.Path("source.mkv"));
        EncodePlan plan = session::OfBoth(source, folder.Path("out.wmv"));
        session::RunCleanly(plan);
        const clips::Contents contents = clips::Decode(plan.FilePath());
        EXPECT_EQ(contents.frames.size(), row.frames);
        EXPECT_NEAR(contents.duration, std::max(row.audio, row.video), 0.05);
        EXPECT_NEAR(static_cast<double>(contents.audio.size()) / 44100, row.audio, 0.1);
    }
}

TEST(Timing, AudioAndVideoOfTwoFiles) {
    const clips::Folder folder;
    const std::string both = FlashAndClick(folder, "-c:v mpeg4 -g 10 -c:a pcm_s16le", "a.avi");
    const std::string audio = clips::Ffmpeg("-i " + both + " -vn", folder.Path("audio.wav"));
    const std::string video =
        clips::Ffmpeg("-i " + both + " -an -c:v copy", folder.Path("video.avi"));
    EncodePlan plan = session::OfAudio(audio, folder.Path("out.wmv"));
    plan.video = session::Video(video);
    session::RunCleanly(plan);
    const clips::Contents contents = clips::Decode(plan.FilePath());
    const std::vector<double> flashes = clips::Flashes(contents);
    const std::vector<double> clicks = clips::Clicks(contents);
    ASSERT_EQ(flashes.size(), 5U);
    ASSERT_EQ(clicks.size(), 5U);
    for (std::size_t i = 0; i < 5; ++i) EXPECT_NEAR(clicks[i], flashes[i], 0.010);
}

// A hole in the audio is silence of its length, not audio that moves up.
TEST(Timing, AGapInTheAudioIsKept) {
    const clips::Folder folder;
    const std::string source = clips::Ffmpeg(
        "-f lavfi -i \"aevalsrc='if(lt(mod(t,2),0.002),0.9,0)':s=44100:d=9\" -af "
        "\"aselect='lt(t,2.5)+gt(t,3.5)'\" -c:a pcm_s16le",
        folder.Path("gap.mkv"));
    EncodePlan plan = session::OfAudio(source, folder.Path("out.wma"));
    session::RunCleanly(plan);
    const std::vector<double> clicks = clips::Clicks(clips::Decode(plan.FilePath()));
    ASSERT_EQ(clicks.size(), 5U);
    for (std::size_t i = 0; i < clicks.size(); ++i)
        EXPECT_NEAR(clicks[i], static_cast<double>(2 * i), 0.010);
}

TEST(Timing, AStillPictureLastsToItsMark) {
    const clips::Folder folder;
    for (const char* name : {"p.png", "p.jpg", "p.bmp", "100%d.png"}) {
        SCOPED_TRACE(name);
        const std::string source = clips::Ffmpeg(
            "-f lavfi -i testsrc2=s=161x121 -frames:v 1 -update 1", folder.Path(name));
        EncodePlan plan = session::OfVideo(source, folder.Path("out.wmv"));
        EXPECT_TRUE(plan.video->input.still);
        plan.video->input.mark_out = Ticks::FromMilliseconds(2350);
        plan.video->width = 160;
        plan.video->height = 120;
        plan.video->rate_ceiling = plan.video->expected_rate = 10000;
        session::RunCleanly(plan);
        const clips::Contents contents = clips::Decode(plan.FilePath());
        EXPECT_EQ(contents.frames.size(), 24U);
        EXPECT_NEAR(contents.duration, 2.35, 0.001);
    }
}

struct FilmCase {
    const char* why;
    const char* source;
    std::size_t frames_without, frames_with;
};

// clang-format off
const FilmCase kFilmCases[] = {
    // why                         source                                                                                                                       as is  restored
    {"2:3, top field first",       "-f lavfi -i testsrc2=s=320x240:r=24000/1001 -t 5 -vf telecine -c:v mpeg2video -q:v 3 -flags +ildct+ilme",                    150,   120},
    {"3:2, bottom field first",    "-f lavfi -i testsrc2=s=320x240:r=24000/1001 -t 5 -vf telecine=pattern=32:first_field=bottom -c:v mpeg2video -q:v 3 -flags +ildct+ilme", 150, 120},
    {"progressive video",          "-f lavfi -i testsrc2=s=320x240:r=30000/1001 -t 5 -c:v mpeg2video -q:v 3",                                                    150,   150},
    {"film that stayed film",      "-f lavfi -i testsrc2=s=320x240:r=24000/1001 -t 5 -c:v mpeg2video -q:v 3",                                                    120,   120},
    {"fields of different times",  "-f lavfi -i testsrc2=s=320x240:r=60000/1001 -t 5 -vf tinterlace=interleave_top -c:v mpeg2video -q:v 3 -flags +ildct+ilme",     150,   150},
};
// clang-format on

TEST(Timing, OnlyTelecinedFilmIsRestored) {
    const clips::Folder folder;
    for (const FilmCase& row : kFilmCases) {
        SCOPED_TRACE(row.why);
        const std::string source = clips::Ffmpeg(row.source, folder.Path("film.mpg"));
        for (const bool restore : {false, true}) {
            EncodePlan plan = session::OfVideo(source, folder.Path("out.wmv"));
            plan.video->bit_rate_bps = 3'000'000;
            plan.video->remove_telecine = restore;
            session::RunCleanly(plan);
            const clips::Contents contents = clips::Decode(plan.FilePath());
            const std::size_t frames = restore ? row.frames_with : row.frames_without;
            ASSERT_NEAR(static_cast<double>(contents.frames.size()), static_cast<double>(frames),
                        1);
            EXPECT_NEAR(contents.duration, 5.0, 0.05);
            const double interval = 5.0 / static_cast<double>(frames);
            for (std::size_t i = 12; i + 12 < contents.frames.size(); ++i)
                EXPECT_NEAR(contents.frames[i].time - contents.frames[i - 1].time, interval, 0.003);
        }
    }
}

}  // namespace
