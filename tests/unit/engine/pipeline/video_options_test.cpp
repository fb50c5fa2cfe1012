// What the video options make of frames, measured against those that ffmpeg made.
#include <gtest/gtest.h>

#include "support/clips.h"
#include "unit/engine/pipeline/session.h"

namespace {

using namespace engine;

double LumaPsnr(const std::string& file, const std::string& reference, const std::string& filter) {
    return clips::Psnr(file, reference, filter, "gray");
}

// The source's whole frame, uncompressed.
VideoPlan Uncompressed(const std::string& source) {
    VideoPlan video = session::Video(source);
    video.codec = &session::VideoCodec("rawvideo");
    video.bit_rate_bps = 0;
    return video;
}

struct ClipCase {
    const char* why;
    const char* name;
    const char* coding;
    Margins crop;
    int width, height;
    const char* same;  // in ffmpeg's words
};

// clang-format off
const ClipCase kClipCases[] = {
    // why                       source     coding                                  margins          size      the same
    {"all four margins",         "a.avi",   "-c:v ffv1",                            {10, 30, 6, 14}, 280, 220, "crop=280:220:10:6"},
    {"odd ones",                 "a.avi",   "-c:v ffv1",                            {11, 30, 7, 14}, 279, 219, "crop=279:219:11:7:exact=1"},
    {"one",                      "a.avi",   "-c:v ffv1",                            {0, 0, 0, 20},   320, 220, "crop=320:220:0:0"},
    {"before the scaling",       "a.avi",   "-c:v ffv1",                            {10, 30, 6, 14}, 140, 110, "crop=280:220:10:6,scale=140:110:flags=bicubic"},
    {"of the upright frame",   "t.mp4",   "-c:v mpeg4 -q:v 2",                    {10, 30, 6, 14}, 200, 300, "crop=200:300:10:6"},
};
// clang-format on

TEST(VideoOptions, MarginsAreCutOff) {
    const clips::Folder folder;
    for (const ClipCase& row : kClipCases) {
        SCOPED_TRACE(row.why);
        std::string source = clips::Ffmpeg(
            std::string("-f lavfi -i testsrc2=s=320x240:r=25 -frames:v 5 ") + row.coding,
            folder.Path(row.name));
        if (row.width < row.height)
            source = clips::Ffmpeg("-i " + source + " -c copy -metadata:s:v:0 rotate=90",
                                   folder.Path("turned.mp4"));
        EncodePlan plan = session::Plan(folder.Path("out.wmv"));
        plan.video = Uncompressed(source);
        plan.video->crop = row.crop;
        plan.video->width = row.width;
        plan.video->height = row.height;
        session::RunCleanly(plan);
        EXPECT_EQ(clips::Decode(plan.FilePath()).frames.size(), 5U);
        EXPECT_GT(LumaPsnr(plan.FilePath(), source, row.same), 40);
    }
}

struct FieldCase {
    const char* why;
    const char* name;
    const char* made;  // of 50 frames a second
    bool progressive = false;
};

// clang-format off
const FieldCase kFieldCases[] = {
    // why                                    source    made
    {"frames that say top first",             "a.mpg",  "-vf tinterlace=interleave_top,setfield=tff -c:v mpeg2video -q:v 1 -flags +ildct+ilme"},
    {"frames that say bottom first",          "b.mpg",  "-vf tinterlace=interleave_bottom,setfield=bff -c:v mpeg2video -q:v 1 -flags +ildct+ilme -top 0"},
    {"a file that says bottom first",         "c.mkv",  "-vf tinterlace=interleave_bottom,setfield=bff -c:v ffv1"},
    {"nobody says: top first",                "d.avi",  "-vf tinterlace=interleave_top,setfield=prog -c:v ffv1"},
    {"packed pixels",                         "e.avi",  "-vf tinterlace=interleave_top,setfield=prog,format=yuyv422 -c:v rawvideo"},
    {"progressive video loses little",        "f.avi",  "-vf framestep=2 -c:v ffv1", true},
};
// clang-format on

TEST(VideoOptions, FieldsBecomeTheFramesOfTheirTime) {
    const clips::Folder folder;
    for (const FieldCase& row : kFieldCases) {
        SCOPED_TRACE(row.why);
        const std::string fields =
            "\"nullsrc=s=160x120:r=50:d=1,geq=lum='128+100*sin((X+4*N)/9)*cos((Y+2*N)/11)':"
            "cb=128:cr=128\"";
        const std::string whole = clips::Ffmpeg(
            "-f lavfi -i " + fields + " -vf framestep=2 -c:v ffv1", folder.Path("whole.avi"));
        const std::string source =
            clips::Ffmpeg("-f lavfi -i " + fields + " " + row.made, folder.Path(row.name));
        for (const bool deinterlace : {false, true}) {
            EncodePlan plan = session::Plan(folder.Path("out.wmv"));
            plan.video = Uncompressed(source);
            plan.video->deinterlace = deinterlace;
            session::RunCleanly(plan);
            const clips::Contents contents = clips::Decode(plan.FilePath());
            ASSERT_EQ(contents.frames.size(), 25U);
            EXPECT_EQ(contents.height, 120);
            for (std::size_t i = 0; i < 25; ++i)
                EXPECT_NEAR(contents.frames[i].time, static_cast<double>(i) / 25, 0.002);
            const double psnr = LumaPsnr(plan.FilePath(), whole, "null");
            if (deinterlace || row.progressive)
                EXPECT_GT(psnr, 40);
            else
                EXPECT_LT(psnr, 25) << "the clip has no fields";
        }
    }
}

TEST(VideoOptions, PlayersAreToldThePixelsShape) {
    const clips::Folder folder;
    const std::string source = clips::Ffmpeg(
        "-f lavfi -i testsrc2=s=160x120:r=25 -frames:v 2 -c:v ffv1", folder.Path("source.avi"));
    for (const Ratio& aspect : {Ratio{1, 1}, Ratio{16, 15}, Ratio{4, 3}, Ratio{10, 11}}) {
        EncodePlan plan = session::OfVideo(source, folder.Path("out.wmv"));
        plan.video->pixel_aspect = aspect;
        session::RunCleanly(plan);
        EXPECT_EQ(
            clips::OutputOf("ffprobe -v error -show_entries stream=sample_aspect_ratio "
                            "-of csv=p=0 '" +
                            plan.FilePath() + "'"),
            std::to_string(aspect.numerator) + ":" + std::to_string(aspect.denominator) + "\n");
    }
}

struct PixelCase {
    std::uint32_t format;  // of -pixelformat
    const char* read_as;
    double least;  // decibels of all colours
};

// clang-format off
const PixelCase kPixelCases[] = {
    {platform::FourCC("I420"), "yuv420p",  90},
    {platform::FourCC("IYUV"), "yuv420p",  90},
    {platform::FourCC("YV12"), "yuv420p",  90},
    {platform::FourCC("YUY2"), "yuyv422",  35},
    {platform::FourCC("UYVY"), "uyvy422",  35},
    {platform::FourCC("YVYU"), "yvyu422",  35},
    {platform::FourCC("YVU9"), "yuv410p",  25},
    {0xE436EB7D,               "bgr24",    30},
    {0xE436EB7E,               "bgra",     30},
    {0xE436EB7C,               "rgb555le", 25},
};
// clang-format on

TEST(VideoOptions, UncompressedPixelsAreReadAsTheyWereAskedFor) {
    const clips::Folder folder;
    const std::string source = clips::Ffmpeg(
        "-f lavfi -i testsrc2=s=164x120:r=25 -frames:v 3 -c:v ffv1", folder.Path("source.avi"));
    for (const PixelCase& row : kPixelCases) {
        const platform::PixelFormatRow* pixels = platform::FindPixelFormat(row.format);
        ASSERT_NE(pixels, nullptr);
        SCOPED_TRACE(pixels->name);
        EncodePlan plan = session::Plan(folder.Path("out.wmv"));
        plan.video = Uncompressed(source);
        plan.video->pixels = pixels;
        session::RunCleanly(plan);
        EXPECT_EQ(clips::OutputOf("ffprobe -v error -show_entries stream=pix_fmt -of csv=p=0 '" +
                                  plan.FilePath() + "'"),
                  std::string(row.read_as) + "\n");
        EXPECT_GT(clips::Psnr(plan.FilePath(), source, "null", "yuv420p"), row.least);
    }
}

TEST(VideoOptions, CodecsGetTheFrameThroughTheAskedPixels) {
    const clips::Folder folder;
    const std::string source = clips::Ffmpeg(
        "-f lavfi -i testsrc2=s=160x120:r=25 -frames:v 3 -c:v ffv1", folder.Path("source.avi"));
    EncodePlan plan = session::OfVideo(source, folder.Path("out.wmv"));
    plan.video->mode = platform::VbrMode::Quality;
    plan.video->quality = 100;
    plan.video->pixels = platform::FindPixelFormat(0xE436EB7C);
    session::RunCleanly(plan);
    const double same = clips::Psnr(plan.FilePath(), source, "format=rgb555le", "yuv420p");
    const double other = clips::Psnr(plan.FilePath(), source, "null", "yuv420p");
    EXPECT_GT(same, other + 5) << "the steps of five bits a colour are there";
}

struct InterlacedCase {
    const char* why;
    FieldCoding fields;
    const char* source;  // of 50 frames a second
    bool top_first;
};

// clang-format off
const InterlacedCase kInterlacedCases[] = {
    {"as the source says",    FieldCoding::AsTheSource, "tinterlace=interleave_bottom,setfield=bff", false},
    {"top where nobody says", FieldCoding::AsTheSource, "tinterlace=interleave_top,setfield=prog",   true},
    {"top as told",           FieldCoding::TopFirst,    "tinterlace=interleave_bottom,setfield=bff", true},
    {"bottom as told",        FieldCoding::BottomFirst, "tinterlace=interleave_top,setfield=prog",   false},
};
// clang-format on

TEST(VideoOptions, FieldsAreCodedAsFields) {
    const clips::Folder folder;
    for (const InterlacedCase& row : kInterlacedCases) {
        SCOPED_TRACE(row.why);
        const std::string source = clips::Ffmpeg(
            std::string("-f lavfi -i testsrc2=s=320x240:r=50:d=1 -vf ") + row.source + " -c:v ffv1",
            folder.Path("fields.mkv"));
        EncodePlan plan = session::OfVideo(source, folder.Path("out.wmv"), "mpeg4");
        plan.video->mode = platform::VbrMode::Quality;
        plan.video->quality = 90;
        const session::Outcome progressive = session::RunCleanly(plan);
        plan.video->fields = row.fields;
        const session::Outcome outcome = session::RunCleanly(plan);
        EXPECT_EQ(clips::DecodeMessages(plan.FilePath()), "");
        const std::string said = clips::OutputOf(
            "ffprobe -v error -show_entries frame=interlaced_frame,top_field_first -of csv=p=0 "
            "-read_intervals %+#1 '" +
            plan.FilePath() + "'");
        EXPECT_TRUE(said.starts_with(row.top_first ? "1,1" : "1,0")) << said;
        EXPECT_GT(LumaPsnr(plan.FilePath(), source, "null"), 33);
        EXPECT_LT(outcome.video.byte_count.Raw(), progressive.video.byte_count.Raw())
            << "fields that move are smaller than frames that flicker";
    }
}

struct PatternCase {
    const char* why;
    TelecinePattern pattern;
    int skipped;       // of the pulldown's frames before the clip begins
    int video, film;   // frames
    int film_skipped;  // film frames that are not whole in the clip
};

// clang-format off
const PatternCase kPatternCases[] = {
    // why                 pattern     skipped video film film skipped
    {"AA, top first",      {0, false}, 0,      50,   40,  0},
    {"BB, top first",      {1, false}, 1,      49,   39,  1},
    {"BC, top first",      {2, false}, 2,      48,   38,  2},
    {"CD, top first",      {3, false}, 3,      47,   37,  3},
    {"DD, top first",      {4, false}, 4,      46,   37,  3},
    {"AA, bottom first",   {0, true},  0,      50,   40,  0},
    {"CD, bottom first",   {3, true},  3,      47,   37,  3},
    {"half a frame at the end", {0, true}, 0,  48,   38,  0},
};
// clang-format on

TEST(VideoOptions, FilmComesBackByItsPattern) {
    const clips::Folder folder;
    const std::string film =
        clips::Ffmpeg("-f lavfi -i testsrc2=s=160x120:r=24000/1001 -frames:v 40 -c:v ffv1",
                      folder.Path("film.avi"));
    for (const PatternCase& row : kPatternCases) {
        SCOPED_TRACE(row.why);
        const std::string source = clips::Ffmpeg(
            "-i " + film + " -vf telecine=pattern=23:first_field=" +
                (row.pattern.bottom_first ? "bottom" : "top") +
                ",trim=start_frame=" + std::to_string(row.skipped) +
                ",setpts=PTS-STARTPTS -frames:v " + std::to_string(row.video) + " -c:v ffv1",
            folder.Path("video.avi"));
        EncodePlan plan = session::Plan(folder.Path("out.wmv"));
        plan.video = Uncompressed(source);
        plan.video->telecine = row.pattern;
        session::RunCleanly(plan);
        const clips::Contents contents = clips::Decode(plan.FilePath());
        ASSERT_EQ(contents.frames.size(), static_cast<std::size_t>(row.film));
        EXPECT_EQ(contents.frames.front().time, 0);
        for (std::size_t i = 2; i < contents.frames.size(); ++i)
            EXPECT_NEAR(contents.frames[i].time - contents.frames[i - 1].time, 1001.0 / 24000,
                        0.002);
        EXPECT_GT(
            LumaPsnr(plan.FilePath(), film, "trim=start_frame=" + std::to_string(row.film_skipped)),
            45);
    }
}

}  // namespace
