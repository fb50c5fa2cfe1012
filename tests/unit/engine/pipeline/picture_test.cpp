// What the picture options make of a picture, measured against pictures that ffmpeg made.
#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>

#include "unit/engine/pipeline/clips.h"
#include "unit/engine/pipeline/session.h"

namespace {

using namespace engine;

// Decibels of the luma between frames of the same number, after `filter` on the reference.
double LumaPsnr(const std::string& file, const std::string& reference, const std::string& filter) {
    const std::string said =
        clips::OutputOf("ffmpeg -nostdin -i '" + file + "' -i '" + reference +
                        "' -lavfi \"[0:v]settb=1/25," + "setpts=N,format=gray[a];[1:v]" + filter +
                        ",settb=1/25,setpts=N,format=gray[b];[a][b]psnr=shortest=1\" -f null -");
    const std::size_t at = said.find("average:");
    if (at == std::string::npos) {
        ADD_FAILURE() << said;
        return 0;
    }
    const std::string figure = said.substr(at + 8);
    return figure.starts_with("inf") ? std::numeric_limits<double>::infinity()
                                     : std::strtod(figure.c_str(), nullptr);
}

// The source's whole picture, uncompressed.
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
    {"of the upright picture",   "t.mp4",   "-c:v mpeg4 -q:v 2 -metadata:s:v rotate=90", {10, 30, 6, 14}, 200, 300, "crop=200:300:10:6"},
};
// clang-format on

TEST(Picture, MarginsAreCutOff) {
    const clips::Folder folder;
    for (const ClipCase& row : kClipCases) {
        SCOPED_TRACE(row.why);
        const std::string source = clips::Make(
            std::string("-f lavfi -i testsrc2=s=320x240:r=25 -frames:v 5 ") + row.coding,
            folder.Path(row.name));
        EncodePlan plan = session::Plan(folder.Path("out.wmv"));
        plan.video = Uncompressed(source);
        plan.video->crop = row.crop;
        plan.video->width = row.width;
        plan.video->height = row.height;
        const session::Outcome outcome = session::Run(plan);
        EXPECT_TRUE(outcome.errors.empty()) << outcome.error_text;
        EXPECT_EQ(clips::Decode(plan.output_path).pictures.size(), 5U);
        EXPECT_GT(LumaPsnr(plan.output_path, source, row.same), 40);
    }
}

struct FieldCase {
    const char* why;
    const char* name;
    const char* made;  // of the 50 pictures a second that `fields` has
    const char* size;
};

// clang-format off
const FieldCase kFieldCases[] = {
    // why                                    source    made                                                                                              size
    {"frames that say top first",             "a.mpg",  "-vf tinterlace=interleave_top,setfield=tff -c:v mpeg2video -q:v 1 -flags +ildct+ilme",            "160x120"},
    {"frames that say bottom first",          "b.mpg",  "-vf tinterlace=interleave_bottom,setfield=bff -c:v mpeg2video -q:v 1 -flags +ildct+ilme -top 0",  "160x120"},
    {"a file that says bottom first",         "c.mkv",  "-vf tinterlace=interleave_bottom,setfield=bff -c:v ffv1",                                         "160x120"},
    {"nobody says: top first",                "d.avi",  "-vf tinterlace=interleave_top,setfield=prog -c:v ffv1",                                           "160x120"},
    {"packed pixels",                         "e.avi",  "-vf tinterlace=interleave_top,setfield=prog,format=yuyv422 -c:v rawvideo",                        "160x120"},
    {"progressive video loses little",        "f.avi",  "-vf framestep=2 -c:v ffv1",                                                                      "160x120"},
};
// clang-format on

TEST(Picture, FieldsBecomeThePicturesOfTheirTime) {
    const clips::Folder folder;
    for (const FieldCase& row : kFieldCases) {
        SCOPED_TRACE(row.why);
        const std::string fields = std::string("testsrc2=s=") + row.size + ":r=50:d=1";
        const std::string whole = clips::Make(
            "-f lavfi -i " + fields + " -vf framestep=2 -c:v ffv1", folder.Path("whole.avi"));
        const std::string source =
            clips::Make("-f lavfi -i " + fields + " " + row.made, folder.Path(row.name));
        double psnr[2] = {};
        for (const bool deinterlace : {false, true}) {
            EncodePlan plan = session::Plan(folder.Path("out.wmv"));
            plan.video = Uncompressed(source);
            plan.video->deinterlace = deinterlace;
            const session::Outcome outcome = session::Run(plan);
            EXPECT_TRUE(outcome.errors.empty()) << outcome.error_text;
            const clips::Contents contents = clips::Decode(plan.output_path);
            ASSERT_EQ(contents.pictures.size(), 25U);
            EXPECT_EQ(contents.height, 120);
            for (std::size_t i = 0; i < 25; ++i)
                EXPECT_NEAR(contents.pictures[i].time, static_cast<double>(i) / 25, 0.002);
            psnr[deinterlace ? 1 : 0] = LumaPsnr(plan.output_path, whole, "null");
        }
        std::cout << row.why << psnr[0] << " " << psnr[1] << std::endl;
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

TEST(Picture, FilmComesBackByItsPattern) {
    const clips::Folder folder;
    const std::string film =
        clips::Make("-f lavfi -i testsrc2=s=160x120:r=24000/1001 -frames:v 40 -c:v ffv1",
                    folder.Path("film.avi"));
    for (const PatternCase& row : kPatternCases) {
        SCOPED_TRACE(row.why);
        const std::string source = clips::Make(
            "-i " + film + " -vf telecine=pattern=23:first_field=" +
                (row.pattern.bottom_first ? "bottom" : "top") +
                ",trim=start_frame=" + std::to_string(row.skipped) +
                ",setpts=PTS-STARTPTS -frames:v " + std::to_string(row.video) + " -c:v ffv1",
            folder.Path("video.avi"));
        EncodePlan plan = session::Plan(folder.Path("out.wmv"));
        plan.video = Uncompressed(source);
        plan.video->telecine = row.pattern;
        const session::Outcome outcome = session::Run(plan);
        EXPECT_TRUE(outcome.errors.empty()) << outcome.error_text;
        const clips::Contents contents = clips::Decode(plan.output_path);
        ASSERT_EQ(contents.pictures.size(), static_cast<std::size_t>(row.film));
        EXPECT_EQ(contents.pictures.front().time, 0);
        for (std::size_t i = 2; i < contents.pictures.size(); ++i)
            EXPECT_NEAR(contents.pictures[i].time - contents.pictures[i - 1].time, 1001.0 / 24000,
                        0.002);
        EXPECT_GT(LumaPsnr(plan.output_path, film,
                           "trim=start_frame=" + std::to_string(row.film_skipped)),
                  45);
    }
}

}  // namespace
