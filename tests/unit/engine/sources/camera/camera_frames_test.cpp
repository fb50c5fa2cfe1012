// What becomes of a camera's bytes, against frames that ffmpeg made of the same source.
#include "engine/sources/camera/camera_frames.h"

#include <gtest/gtest.h>
#include <linux/videodev2.h>

#include <fstream>
#include <iterator>

#include "engine/sources/camera/camera_format.h"
#include "support/commands.h"

extern "C" {
#include <libswscale/swscale.h>
}

namespace engine {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr int kWidth = 62;  // of no great power of two
constexpr int kHeight = 34;

class CameraFrames : public testing::Test {
  protected:
    // The test pattern in a pixel format, rows without gaps; "mjpeg" as a JPEG file.
    Bytes Pattern(const std::string& pixels) const {
        const bool jpeg = pixels == "mjpeg";
        const std::string file = test_support::Ffmpeg(
            "-f lavfi -i testsrc2=size=62x34,scale=out_color_matrix=bt601,format=" +
                (jpeg ? "yuvj422p" : pixels) + " -frames:v 1 " +
                (jpeg ? "-q:v 2 -f image2" : "-f rawvideo"),
            folder_ / pixels);
        std::ifstream read(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(read), {}};
    }

    static v4l2_pix_format Layout(std::uint32_t pixels, std::uint32_t stride) {
        v4l2_pix_format layout{};
        layout.width = kWidth;
        layout.height = kHeight;
        layout.pixelformat = pixels;
        layout.bytesperline = stride;
        layout.colorspace = V4L2_COLORSPACE_SRGB;
        return layout;
    }

    // The frame's bytes, rows without gaps.
    static Bytes BytesOf(const AVFrame& frame) {
        const auto format = static_cast<AVPixelFormat>(frame.format);
        const int size = av_image_get_buffer_size(format, frame.width, frame.height, 1);
        Bytes bytes(static_cast<std::size_t>(size));
        av_image_copy_to_buffer(bytes.data(), size, frame.data, frame.linesize, format, frame.width,
                                frame.height, 1);
        return bytes;
    }

    test_support::TempFolder folder_;
    FramePool frames_;
};

// A driver's rows are longer than the frame is wide: put the gaps in, in every plane.
Bytes WithGaps(const Bytes& dense, const std::vector<std::array<std::size_t, 3>>& planes) {
    Bytes bytes;
    auto from = dense.begin();
    for (const auto& [row, stride, rows] : planes)
        for (std::size_t i = 0; i < rows; ++i) {
            bytes.insert(bytes.end(), from, from + static_cast<std::ptrdiff_t>(row));
            bytes.insert(bytes.end(), stride - row, 0xEE);
            from += static_cast<std::ptrdiff_t>(row);
        }
    return bytes;
}

TEST_F(CameraFrames, RawOnesKeepEveryPixel) {
    struct Case {
        std::uint32_t code;
        const char* ffmpeg;
        AVPixelFormat format;
        std::uint32_t stride;
        std::vector<std::array<std::size_t, 3>> planes;  // bytes of a row, with its gap, rows
    };
    // clang-format off
    const Case cases[] = {
        {V4L2_PIX_FMT_YUYV,    "yuyv422",  AV_PIX_FMT_YUYV422,  128, {{124, 128, 34}}},
        {V4L2_PIX_FMT_UYVY,    "uyvy422",  AV_PIX_FMT_UYVY422,  0,   {{124, 124, 34}}},
        {V4L2_PIX_FMT_NV12,    "nv12",     AV_PIX_FMT_NV12,     64,  {{62, 64, 34}, {62, 64, 17}}},
        {V4L2_PIX_FMT_YUV420,  "yuv420p",  AV_PIX_FMT_YUV420P,  80,  {{62, 80, 34}, {31, 40, 17}, {31, 40, 17}}},
        {V4L2_PIX_FMT_YUV422P, "yuv422p",  AV_PIX_FMT_YUV422P,  80,  {{62, 80, 34}, {31, 40, 34}, {31, 40, 34}}},
        {V4L2_PIX_FMT_BGR24,   "bgr24",    AV_PIX_FMT_BGR24,    192, {{186, 192, 34}}},
        {V4L2_PIX_FMT_XBGR32,  "bgr0",     AV_PIX_FMT_BGR0,     256, {{248, 256, 34}}},
        {V4L2_PIX_FMT_RGB565,  "rgb565le", AV_PIX_FMT_RGB565LE, 124, {{124, 124, 34}}},
        {V4L2_PIX_FMT_GREY,    "gray",     AV_PIX_FMT_GRAY8,    64,  {{62, 64, 34}}},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.ffmpeg);
        const Bytes dense = Pattern(c.ffmpeg);
        Bytes memory = WithGaps(dense, c.planes);
        const auto maker = MakeCameraFrameMaker(Layout(c.code, c.stride), frames_);
        const FrameHandle frame = maker->Make(memory);
        ASSERT_TRUE(frame);
        std::fill(memory.begin(), memory.end(), std::uint8_t{0});  // the driver's next frame
        EXPECT_EQ(frame->format, c.format);
        EXPECT_EQ(BytesOf(*frame), dense);
        memory.pop_back();
        EXPECT_FALSE(maker->Make(memory)) << "a byte is missing";
    }
}

TEST_F(CameraFrames, OfEveryFormatCanBeScaled) {
    for (const CameraPixelRow& row : CameraPixels()) {
        if (row.kind != CameraPixelRow::Kind::Jpeg) {
            EXPECT_NE(sws_isSupportedInput(av_get_pix_fmt(row.av_name)), 0) << row.av_name;
        }
    }
}

TEST_F(CameraFrames, YV12HasItsColoursTheOtherWayRound) {
    const Bytes dense = Pattern("yuv420p");
    Bytes swapped(dense.begin(), dense.begin() + kWidth * kHeight);
    const auto blue = dense.begin() + kWidth * kHeight;
    const auto red = blue + 31 * 17;
    swapped.insert(swapped.end(), red, dense.end());
    swapped.insert(swapped.end(), blue, red);
    const auto frame =
        MakeCameraFrameMaker(Layout(V4L2_PIX_FMT_YVU420, 62), frames_)->Make(swapped);
    ASSERT_TRUE(frame);
    EXPECT_EQ(BytesOf(*frame), dense);
}

TEST_F(CameraFrames, SayHowTheirColoursAreCoded) {
    struct Case {
        const char* why;
        std::uint32_t pixels, colours, coding, range;
        AVColorSpace space;
        AVColorRange av_range;
    };
    // clang-format off
    const Case cases[] = {
        {"a webcam",      V4L2_PIX_FMT_YUYV,  V4L2_COLORSPACE_SRGB,      0, 0, AVCOL_SPC_SMPTE170M, AVCOL_RANGE_MPEG},
        {"a JPEG's",      V4L2_PIX_FMT_YUYV,  V4L2_COLORSPACE_JPEG,      0, 0, AVCOL_SPC_SMPTE170M, AVCOL_RANGE_JPEG},
        {"said full",     V4L2_PIX_FMT_YUYV,  V4L2_COLORSPACE_SRGB,      0, V4L2_QUANTIZATION_FULL_RANGE, AVCOL_SPC_SMPTE170M, AVCOL_RANGE_JPEG},
        {"a HDMI card",   V4L2_PIX_FMT_NV12,  V4L2_COLORSPACE_REC709,    0, 0, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG},
        {"said coding",   V4L2_PIX_FMT_NV12,  V4L2_COLORSPACE_SRGB,      V4L2_YCBCR_ENC_709, 0, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG},
        {"no coding",     V4L2_PIX_FMT_BGR24, V4L2_COLORSPACE_SRGB,      0, 0, AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_UNSPECIFIED},
    };
    // clang-format on
    const Bytes bytes(kWidth * kHeight * 4);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        v4l2_pix_format layout = Layout(c.pixels, 0);
        layout.colorspace = c.colours;
        layout.ycbcr_enc = c.coding;
        layout.quantization = c.range;
        const auto frame = MakeCameraFrameMaker(layout, frames_)->Make(bytes);
        ASSERT_TRUE(frame);
        EXPECT_EQ(frame->colorspace, c.space);
        EXPECT_EQ(frame->color_range, c.av_range);
    }
}

TEST_F(CameraFrames, JpegOnesAreDecodedInTheirRange) {
    const auto maker = MakeCameraFrameMaker(Layout(V4L2_PIX_FMT_MJPEG, 0), frames_);
    const FrameHandle frame = maker->Make(Pattern("mjpeg"));
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->format, AV_PIX_FMT_YUV422P);
    EXPECT_EQ(frame->color_range, AVCOL_RANGE_JPEG);
    const Bytes expected = Pattern("yuvj422p");
    const Bytes decoded = BytesOf(*frame);
    ASSERT_EQ(decoded.size(), expected.size());
    double difference = 0;
    for (std::size_t i = 0; i < decoded.size(); ++i)
        difference += std::abs(int{decoded[i]} - int{expected[i]});
    EXPECT_LT(difference / static_cast<double>(decoded.size()), 4);
}

TEST_F(CameraFrames, BrokenJpegOnesArePassedOverUnlessAllAre) {
    const Bytes whole = Pattern("mjpeg");
    const Bytes half(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(whole.size() / 2));
    const auto maker = MakeCameraFrameMaker(Layout(V4L2_PIX_FMT_MJPEG, 0), frames_);
    for (const Bytes& broken : {half, Bytes(1000, 0x55), Bytes()}) {
        EXPECT_FALSE(maker->Make(broken));
        const FrameHandle next = maker->Make(whole);
        ASSERT_TRUE(next);
        EXPECT_EQ(next->width, kWidth);
    }
    FrameHandle forgiven;
    for (int i = 0; i < 100 && !forgiven; ++i) forgiven = maker->Make(half);
    EXPECT_TRUE(forgiven);
}

}  // namespace
}  // namespace engine
