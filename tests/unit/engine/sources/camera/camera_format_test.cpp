// Which of a camera's formats is taken.
#include "engine/sources/camera/camera_format.h"

#include <gtest/gtest.h>
#include <linux/videodev2.h>

namespace engine {
namespace {

constexpr std::uint32_t kYuyv = V4L2_PIX_FMT_YUYV;
constexpr std::uint32_t kNv12 = V4L2_PIX_FMT_NV12;
constexpr std::uint32_t kJpeg = V4L2_PIX_FMT_MJPEG;
constexpr std::uint32_t kGrey = V4L2_PIX_FMT_GREY;
constexpr std::uint32_t kH264 = V4L2_PIX_FMT_H264;

struct Offer {
    std::uint32_t pixels;
    CameraSizes sizes;
    std::vector<CameraIntervals> intervals;
};

CameraInterval Every(std::uint32_t rate) { return {1, rate}; }

// One size with some rates.
Offer Of(std::uint32_t pixels, std::int32_t width, std::int32_t height,
         const std::vector<std::uint32_t>& rates) {
    Offer offer = {pixels, {{width, width, 1}, {height, height, 1}}, {}};
    for (const std::uint32_t rate : rates) offer.intervals.push_back({Every(rate), Every(rate)});
    return offer;
}

class Offers : public CameraOffers {
  public:
    explicit Offers(std::vector<Offer> offers) : offers_(std::move(offers)) {}

    std::vector<std::uint32_t> PixelFormats() const override {
        std::vector<std::uint32_t> formats;
        for (const Offer& each : offers_) formats.push_back(each.pixels);
        return formats;
    }
    std::vector<CameraSizes> Sizes(std::uint32_t pixels) const override {
        std::vector<CameraSizes> sizes;
        for (const Offer& each : offers_)
            if (each.pixels == pixels) sizes.push_back(each.sizes);
        return sizes;
    }
    std::vector<CameraIntervals> Intervals(std::uint32_t pixels, std::int32_t width,
                                           std::int32_t height) const override {
        for (const Offer& each : offers_)
            if (each.pixels == pixels && Holds(each.sizes.width, width) &&
                Holds(each.sizes.height, height))
                return each.intervals;
        ADD_FAILURE() << "no such size: " << width << " x " << height;
        return {};
    }

  private:
    static bool Holds(const CameraSide& side, std::int32_t pixels) {
        return pixels >= side.least && pixels <= side.most &&
               (pixels - side.least) % side.step == 0;
    }
    std::vector<Offer> offers_;
};

// A usual webcam: raw frames are slow where they are large.
const std::vector<Offer> kWebcam = {
    Of(kJpeg, 640, 480, {30, 15}), Of(kJpeg, 1280, 720, {30}),    Of(kJpeg, 1920, 1080, {30, 5}),
    Of(kYuyv, 320, 180, {30}),     Of(kYuyv, 640, 360, {30, 24}), Of(kYuyv, 640, 480, {30, 15}),
    Of(kYuyv, 1280, 720, {10, 5}), Of(kYuyv, 1920, 1080, {5}),
};
// What takes any size and any rate.
const std::vector<Offer> kAny = {{kNv12, {{32, 1280, 2}, {32, 960, 2}}, {{Every(60), Every(5)}}}};

struct Case {
    const char* why;
    std::vector<Offer> offers;
    CameraRequest request;
    CameraFormat chosen;  // of width 0 = none
};

TEST(CameraFormat, SuitsTheRequestBest) {
    // clang-format off
    const Case cases[] = {
        {"raw frames of the size", kWebcam, {640, 480, 30'000}, {kYuyv, 640, 480, Every(30)}},
        {"JPEG frames where raw ones are slow", kWebcam, {1280, 720, 30'000}, {kJpeg, 1280, 720, Every(30)}},
        {"raw ones where slow is enough", kWebcam, {1280, 720, 10'000}, {kYuyv, 1280, 720, Every(10)}},
        {"the next rate above", kWebcam, {640, 360, 20'000}, {kYuyv, 640, 360, Every(24)}},
        {"a smaller size scaled from one of its shape", kWebcam, {320, 240, 30'000}, {kYuyv, 640, 480, Every(30)}},
        {"the smallest when none has the shape", kWebcam, {500, 200, 30'000}, {kYuyv, 640, 360, Every(30)}},
        {"the largest when all are too small", kWebcam, {3840, 2160, 30'000}, {kJpeg, 1920, 1080, Every(30)}},
        {"the fastest when all are too slow", kWebcam, {640, 480, 60'000}, {kYuyv, 640, 480, Every(30)}},
        {"no size asked for", kWebcam, {0, 0, 30'000}, {kJpeg, 1280, 720, Every(30)}},
        {"a width only", kWebcam, {640, 0, 30'000}, {kYuyv, 640, 360, Every(30)}},
        {"a height only", kWebcam, {0, 480, 30'000}, {kJpeg, 1280, 720, Every(30)}},
        {"half the size loses to half the rate", {Of(kYuyv, 320, 240, {30}), Of(kYuyv, 640, 480, {15})}, {640, 480, 30'000}, {kYuyv, 640, 480, Every(15)}},
        {"a slow large one loses to a fast one", {Of(kYuyv, 640, 480, {30}), Of(kYuyv, 1280, 1024, {5})}, {1280, 720, 30'000}, {kYuyv, 640, 480, Every(30)}},
        {"29.97 is 30", {Of(kYuyv, 800, 600, {30}), {kYuyv, {{640, 640, 1}, {480, 480, 1}}, {{{1001, 30000}, {1001, 30000}}}}}, {640, 480, 30'000}, {kYuyv, 640, 480, {1001, 30000}}},
        {"less work of two raw ones", {Of(kYuyv, 640, 480, {30}), Of(kNv12, 640, 480, {30})}, {640, 480, 30'000}, {kNv12, 640, 480, Every(30)}},
        {"colours before greys, whatever they are like", {Of(kGrey, 640, 480, {30}), Of(kJpeg, 320, 240, {5})}, {640, 480, 30'000}, {kJpeg, 320, 240, Every(5)}},
        {"greys when there is nothing else", {Of(kGrey, 640, 480, {30}), Of(kH264, 640, 480, {30})}, {640, 480, 30'000}, {kGrey, 640, 480, Every(30)}},
        {"nothing that can be read", {Of(kH264, 640, 480, {30})}, {640, 480, 30'000}, {}},
        {"a rate that is not told", {Of(kYuyv, 640, 480, {})}, {640, 480, 30'000}, {kYuyv, 640, 480, {}}},
        {"exactly from a range", kAny, {854, 480, 24'000}, {kNv12, 854, 480, {1000, 24'000}}},
        {"up to its step", kAny, {853, 479, 30'000}, {kNv12, 854, 480, {1000, 30'000}}},
        {"smaller in its shape", kAny, {1920, 1080, 30'000}, {kNv12, 1280, 720, {1000, 30'000}}},
        {"its ends", kAny, {16, 16, 1'000}, {kNv12, 32, 32, Every(5)}},
        {"its fastest", kAny, {640, 480, 90'000}, {kNv12, 640, 480, Every(60)}},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const CameraFormat chosen =
            ChooseCameraFormat(Offers(c.offers), c.request).value_or(CameraFormat{});
        EXPECT_EQ(chosen.pixels, c.chosen.pixels);
        EXPECT_EQ(chosen.width, c.chosen.width);
        EXPECT_EQ(chosen.height, c.chosen.height);
        EXPECT_EQ(RateOf(chosen.interval), RateOf(c.chosen.interval));
    }
}

}  // namespace
}  // namespace engine
