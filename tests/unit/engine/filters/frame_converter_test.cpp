// The colours of frames as players understand them: by the size, since no stream says its matrix.
#include "engine/filters/frame_converter.h"

#include <array>
#include <utility>

#include "support/row_name.h"

namespace {

using namespace engine;

struct Colours {
    AVPixelFormat pixels;
    std::array<int, 3> parts;  // of one colour: planes, or bytes of packed pixels in their order
    AVColorSpace space = AVCOL_SPC_UNSPECIFIED;
    AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
    AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
    AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
};

struct Size {
    int width, height;
};

FrameHandle Painted(const Colours& colours, const Size& size, FramePool& frames) {
    FrameHandle frame = frames.Get();
    frame->format = colours.pixels;
    frame->width = size.width;
    frame->height = size.height;
    frame->colorspace = colours.space;
    frame->color_range = colours.range;
    frame->color_primaries = colours.primaries;
    frame->color_trc = colours.transfer;
    EXPECT_GE(av_frame_get_buffer(frame.get(), 0), 0);
    const AVPixFmtDescriptor& pixels = *av_pix_fmt_desc_get(colours.pixels);
    for (int part = 0; part < 3; ++part) {
        const AVComponentDescriptor& place = pixels.comp[part];
        const bool chroma = part > 0 && (pixels.flags & AV_PIX_FMT_FLAG_RGB) == 0;
        const int width = chroma ? AV_CEIL_RSHIFT(size.width, pixels.log2_chroma_w) : size.width;
        const int height = chroma ? AV_CEIL_RSHIFT(size.height, pixels.log2_chroma_h) : size.height;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                std::uint8_t* to = frame->data[place.plane] +
                                   std::ptrdiff_t{y} * frame->linesize[place.plane] +
                                   std::ptrdiff_t{x} * place.step + place.offset;
                to[0] = static_cast<std::uint8_t>(colours.parts[static_cast<std::size_t>(part)]);
                if (place.depth > 8)
                    to[1] = static_cast<std::uint8_t>(
                        colours.parts[static_cast<std::size_t>(part)] >> 8);
            }
    }
    return frame;
}

struct Case {
    const char* why;
    Colours from;
    Size source;
    Size coded;
    std::array<int, 3> yuv;
    int tolerance = 3;
    bool untouched = false;
};

constexpr Size kHd = {1280, 720};
constexpr Size kSd = {640, 480};
constexpr std::array<int, 3> kGreen = {0x00, 0xC0, 0x40};
// That green in limited range, by the definition of each matrix.
constexpr std::array<int, 3> kGreen601 = {119, 100, 53};
constexpr std::array<int, 3> kGreen709 = {138, 91, 49};

// clang-format off
const Case kCases[] = {
    {"an HD screen",       {AV_PIX_FMT_RGB0,    kGreen},    kHd, kHd, kGreen709},
    {"a small screen",     {AV_PIX_FMT_RGB0,    kGreen},    kSd, kSd, kGreen601},
    {"an HD screen, scaled down", {AV_PIX_FMT_RGB0, kGreen}, kHd, kSd, kGreen601},
    {"an HD image",        {AV_PIX_FMT_RGB24,   kGreen},    kHd, kHd, kGreen709},
    {"tall counts as HD",  {AV_PIX_FMT_RGB24,   kGreen},    kSd, {640, 578}, kGreen709},
    {"PAL does not",       {AV_PIX_FMT_RGB24,   kGreen},    kHd, {720, 576}, kGreen601},
    {"an HD film",         {AV_PIX_FMT_YUV420P, kGreen709, AVCOL_SPC_BT709}, kHd, kHd, kGreen709, 0, true},
    {"an HD film that does not say", {AV_PIX_FMT_YUV420P, kGreen709}, kHd, kHd, kGreen709, 0, true},
    {"a DVD",              {AV_PIX_FMT_YUV420P, kGreen601, AVCOL_SPC_BT470BG}, {720, 576}, {720, 576}, kGreen601, 0, true},
    {"an HD film, scaled down", {AV_PIX_FMT_YUV420P, kGreen709}, kHd, kSd, kGreen601},
    {"a DVD, scaled up",   {AV_PIX_FMT_YUV420P, kGreen601}, kSd, kHd, kGreen709},
    {"a camera's HD",      {AV_PIX_FMT_YUV422P, kGreen601, AVCOL_SPC_SMPTE170M}, kHd, kHd, kGreen709},
    {"full range",         {AV_PIX_FMT_YUV420P, {120, 96, 42}, AVCOL_SPC_SMPTE170M, AVCOL_RANGE_JPEG}, kSd, kSd, kGreen601},
    {"a wide gamut",       {AV_PIX_FMT_YUV420P10LE, {563, 460, 459}, AVCOL_SPC_BT2020_NCL, AVCOL_RANGE_MPEG, AVCOL_PRI_BT2020, AVCOL_TRC_BT2020_10}, kHd, kHd, {139, 113, 102}},
    // White of 203 candela comes out as some four fifths of the signal, which leaves room above.
    {"PQ's white",         {AV_PIX_FMT_YUV420P10LE, {573, 512, 512}, AVCOL_SPC_BT2020_NCL, AVCOL_RANGE_MPEG, AVCOL_PRI_BT2020, AVCOL_TRC_SMPTE2084}, kHd, kHd, {196, 128, 128}, 8},
    {"PQ's brightest",     {AV_PIX_FMT_YUV420P10LE, {940, 512, 512}, AVCOL_SPC_BT2020_NCL, AVCOL_RANGE_MPEG, AVCOL_PRI_BT2020, AVCOL_TRC_SMPTE2084}, kHd, kSd, {235, 128, 128}, 3},
    {"HLG's black, the rest unsaid", {AV_PIX_FMT_YUV420P10LE, {64, 512, 512}, AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_UNSPECIFIED, AVCOL_PRI_UNSPECIFIED, AVCOL_TRC_ARIB_STD_B67}, kHd, kHd, {16, 128, 128}},
};
// clang-format on

class FrameColours : public testing::TestWithParam<Case> {};
INSTANTIATE_TEST_SUITE_P(Rows, FrameColours, testing::ValuesIn(kCases), test_support::NameOfRow());

TEST_P(FrameColours, AreThoseThatPlayersExpectOfTheSize) {
    const Case& row = GetParam();
    FramePool frames;
    const VideoFrameFormat format = {AV_PIX_FMT_YUV420P, row.coded.width, row.coded.height};
    FrameConverter converter(VideoPlan(), format, 0, frames);
    FrameHandle frame = Painted(row.from, row.source, frames);
    const std::uint8_t* pixels = frame->data[0];
    const FrameHandle converted = converter.Convert(std::move(frame));
    EXPECT_EQ(converted->data[0] == pixels, row.untouched);
    ASSERT_EQ(converted->width, row.coded.width);
    for (std::size_t plane = 0; plane < 3; ++plane)
        EXPECT_NEAR(converted->data[plane][100 * converted->linesize[plane] + 100], row.yuv[plane],
                    row.tolerance)
            << "plane " << plane;
}

}  // namespace
