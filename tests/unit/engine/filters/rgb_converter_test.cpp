// A screen's pixels on their way to an encoder.
#include "engine/filters/rgb_converter.h"

#include <array>
#include <utility>

namespace {

using namespace engine;

struct ColourCase {
    const char* name;
    std::array<int, 3> rgb;
    std::array<int, 3> yuv;  // BT.601, limited range
};

// clang-format off
const ColourCase kColourCases[] = {
    {"black", {  0,   0,   0}, { 16, 128, 128}},
    {"white", {255, 255, 255}, {235, 128, 128}},
    {"grey",  {128, 128, 128}, {126, 128, 128}},
    {"red",   {255,   0,   0}, { 81,  90, 240}},
    {"green", {  0, 255,   0}, {145,  54,  34}},
    {"blue",  {  0,   0, 255}, { 41, 240, 110}},
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
    constexpr int kWidth = 34;  // no multiple of what vectors take
    constexpr int kHeight = 6;
    FramePool frames;
    RgbConverter converter(kWidth, kHeight, frames);
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
            const FrameHandle converted = converter.Convert(*frame);
            for (std::size_t plane = 0; plane < 3; ++plane) {
                const int shift = plane == 0 ? 0 : 1;
                for (int y = 0; y < kHeight >> shift; ++y)
                    for (int x = 0; x < kWidth >> shift; ++x)
                        ASSERT_NEAR(converted->data[plane][y * converted->linesize[plane] + x],
                                    row.yuv[plane], 1)
                            << "plane " << plane << " at " << x << "," << y;
            }
        }
    }
}

}  // namespace
