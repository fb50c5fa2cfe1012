// A screen's pixels on their way to an encoder.
#include "engine/filters/rgb_converter.h"

#include <array>
#include <utility>

namespace {

using namespace engine;

struct ColourCase {
    const char* name;
    std::array<int, 3> rgb;
    AVColorSpace matrix;
    std::array<int, 3> yuv;  // limited range
};

// clang-format off
const ColourCase kColourCases[] = {
    {"black",     {  0,   0,   0}, AVCOL_SPC_SMPTE170M, { 16, 128, 128}},
    {"white",     {255, 255, 255}, AVCOL_SPC_SMPTE170M, {235, 128, 128}},
    {"grey",      {128, 128, 128}, AVCOL_SPC_SMPTE170M, {126, 128, 128}},
    {"red",       {255,   0,   0}, AVCOL_SPC_SMPTE170M, { 81,  90, 240}},
    {"green",     {  0, 255,   0}, AVCOL_SPC_SMPTE170M, {145,  54,  34}},
    {"blue",      {  0,   0, 255}, AVCOL_SPC_SMPTE170M, { 41, 240, 110}},
    {"HD white",  {255, 255, 255}, AVCOL_SPC_BT709,     {235, 128, 128}},
    {"HD grey",   {128, 128, 128}, AVCOL_SPC_BT709,     {126, 128, 128}},
    {"HD red",    {255,   0,   0}, AVCOL_SPC_BT709,     { 63, 102, 240}},
    {"HD green",  {  0, 255,   0}, AVCOL_SPC_BT709,     {173,  42,  26}},
    {"HD blue",   {  0,   0, 255}, AVCOL_SPC_BT709,     { 32, 240, 118}},
};

// Where red, green and blue stand in the four bytes of a pixel.
const std::pair<AVPixelFormat, std::array<std::size_t, 3>> kPackedFormats[] = {
    {AV_PIX_FMT_BGR0, {2, 1, 0}}, {AV_PIX_FMT_BGRA, {2, 1, 0}},
    {AV_PIX_FMT_RGB0, {0, 1, 2}}, {AV_PIX_FMT_RGBA, {0, 1, 2}},
    {AV_PIX_FMT_0RGB, {1, 2, 3}}, {AV_PIX_FMT_ARGB, {1, 2, 3}},
    {AV_PIX_FMT_0BGR, {3, 2, 1}}, {AV_PIX_FMT_ABGR, {3, 2, 1}},
};
// clang-format on

TEST(RgbConverter, KeepsColours) {
    constexpr int kWidth = 77;  // no multiple of what vectors take
    constexpr int kHeight = 7;
    FramePool frames;
    for (const auto& [format, places] : kPackedFormats) {
        for (const ColourCase& row : kColourCases) {
            SCOPED_TRACE(std::string(row.name) + " in " + av_get_pix_fmt_name(format));
            FrameHandle frame = frames.Get();
            frame->format = format;
            frame->width = kWidth;
            frame->height = kHeight;
            ASSERT_GE(av_frame_get_buffer(frame.get(), 0), 0);
            for (int y = 0; y < kHeight; ++y)
                for (int x = 0; x < kWidth; ++x)
                    for (std::size_t part = 0; part < places.size(); ++part)
                        frame->data[0][y * frame->linesize[0] + x * 4 +
                                       static_cast<int>(places[part])] =
                            static_cast<std::uint8_t>(row.rgb[part]);
            ASSERT_TRUE(RgbConverter::Takes(format));
            RgbConverter converter(kWidth, kHeight, row.matrix, frames);
            const FrameHandle converted = converter.Convert(*frame);
            for (std::size_t plane = 0; plane < 3; ++plane) {
                const int shift = plane == 0 ? 0 : 1;
                for (int y = 0; y < (kHeight + shift) >> shift; ++y)
                    for (int x = 0; x < (kWidth + shift) >> shift; ++x)
                        ASSERT_NEAR(converted->data[plane][y * converted->linesize[plane] + x],
                                    row.yuv[plane], 1)
                            << "plane " << plane << " at " << x << "," << y;
            }
        }
    }
}

// A column or row of one colour beside another: chroma is the mean of four pixels.
TEST(RgbConverter, ChromaIsAMean) {
    constexpr int kSide = 70;
    FramePool frames;
    FrameHandle frame = frames.Get();
    frame->format = AV_PIX_FMT_BGR0;
    frame->width = frame->height = kSide;
    ASSERT_GE(av_frame_get_buffer(frame.get(), 0), 0);
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x)
            for (int part = 0; part < 4; ++part)  // of a red pixel in each four, the rest black
                frame->data[0][y * frame->linesize[0] + x * 4 + part] =
                    part == 2 && x % 2 == 1 && y % 2 == 0 ? 255 : 0;
    RgbConverter converter(kSide, kSide, AVCOL_SPC_SMPTE170M, frames);
    const FrameHandle converted = converter.Convert(*frame);
    for (int y = 0; y < kSide / 2; ++y)
        for (int x = 0; x < kSide / 2; ++x) {
            ASSERT_EQ(converted->data[2][y * converted->linesize[2] + x], 128 + 112 / 4);
            ASSERT_EQ(converted->data[0][2 * y * converted->linesize[0] + 2 * x], 16);
            ASSERT_NEAR(converted->data[0][2 * y * converted->linesize[0] + 2 * x + 1], 81, 1);
        }
}

}  // namespace
