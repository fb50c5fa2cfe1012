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

}  // namespace
