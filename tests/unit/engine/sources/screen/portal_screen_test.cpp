#include "engine/sources/screen/frame_pacer.h"
#include "engine/sources/screen/screen_formats.h"

namespace engine {
namespace {

constexpr Ticks Ms(std::int64_t count) { return Ticks::FromMilliseconds(count); }

TEST(FramePacer, GivesWhatTheRateHasRoomForAndTheLastOneAgain) {
    struct Case {
        const char* why;
        std::vector<std::int64_t> seen;      // milliseconds
        std::vector<std::int64_t> expected;  // times of the frames within 2.2 seconds
    };
    const Case cases[] = {
        {"nothing before the first", {}, {}},
        {"regular ones", {0, 100, 200}, {0, 100, 200, 480, 760, 1760}},
        {"twice as many as there is room for",
         {0, 50, 100, 150, 200},
         {0, 100, 200, 480, 760, 1760}},
        {"a burst: its last one, when there is room", {0, 10, 20, 30}, {0, 100, 380, 660, 1660}},
        {"somewhat early ones are kept, an interval apart",
         {0, 80, 180, 300},
         {0, 100, 200, 300, 580, 860, 1860}},
        {"after a pause at once", {0, 730}, {0, 280, 560, 730, 1010, 1290}},
        {"soon after a repeated one", {0, 290}, {0, 280, 380, 660, 940, 1940}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        FramePacer pacer(10'000);
        std::vector<std::int64_t> given;
        std::size_t next = 0;
        for (std::int64_t now = 0; now <= 2200; ++now) {
            if (next < c.seen.size() && c.seen[next] == now) {
                pacer.Came(Ms(now));
                ++next;
            }
            while (pacer.Due() && *pacer.Due() <= Ms(now))
                given.push_back(pacer.Deliver(Ms(now)).Milliseconds());
        }
        EXPECT_EQ(given, c.expected);
    }
}

TEST(FramePacer, AWithdrawnFrameLeavesTheLastOne) {
    FramePacer pacer(10'000);
    pacer.Came(Ms(0));
    pacer.Withdraw();
    EXPECT_FALSE(pacer.Due());
    pacer.Came(Ms(5));
    pacer.Deliver(Ms(5));
    pacer.Came(Ms(10));
    pacer.Withdraw();
    EXPECT_EQ(pacer.Due(), Ms(285));
}

TEST(FramePacer, TheSendersTimeIsBelievedWhenItCanBe) {
    constexpr std::int64_t kSecond = 1'000'000'000;
    const Ticks now = Ms(50'000);
    EXPECT_EQ(TimeSeen(50 * kSecond - 7'000'000, now), Ms(49'993));
    EXPECT_EQ(TimeSeen(std::nullopt, now), now);
    EXPECT_EQ(TimeSeen(51 * kSecond, now), now) << "in the future";
    EXPECT_EQ(TimeSeen(3 * kSecond, now), now) << "of another clock";
}

TEST(ScreenFormats, BytesStandWhereTheirPixelFormatHasThem) {
    struct Case {
        spa_video_format format;
        AVPixelFormat pixels;
        std::array<int, 3> offsets;  // of red, green, blue
    };
    const Case cases[] = {
        {SPA_VIDEO_FORMAT_BGRx, AV_PIX_FMT_BGR0, {2, 1, 0}},
        {SPA_VIDEO_FORMAT_BGRA, AV_PIX_FMT_BGR0, {2, 1, 0}},
        {SPA_VIDEO_FORMAT_RGBx, AV_PIX_FMT_RGB0, {0, 1, 2}},
        {SPA_VIDEO_FORMAT_RGBA, AV_PIX_FMT_RGB0, {0, 1, 2}},
    };
    for (const Case& c : cases) {
        ASSERT_EQ(PixelsOf(c.format), c.pixels);
        const AVPixFmtDescriptor* layout = av_pix_fmt_desc_get(c.pixels);
        for (std::size_t i = 0; i < c.offsets.size(); ++i)
            EXPECT_EQ(layout->comp[i].offset, c.offsets[i]);
    }
    EXPECT_EQ(PixelsOf(SPA_VIDEO_FORMAT_xRGB), AV_PIX_FMT_NONE) << "is not offered";
}

TEST(ScreenFormats, ARegionLiesInThePartThatIsShown) {
    ScreenArea region;
    region.kind = ScreenArea::Kind::Region;
    region.region = {10, 20, 100, 50};
    struct Case {
        const char* why;
        std::optional<PixelBox> shown;
        ScreenArea area;
        PixelBox part;
    };
    const Case cases[] = {
        {"all", {}, {}, {0, 0, 640, 480}},
        {"no crop is told by an empty one", PixelBox{}, {}, {0, 0, 640, 480}},
        {"a window in its buffer", PixelBox{5, 6, 300, 200}, {}, {5, 6, 300, 200}},
        {"more than there is", PixelBox{600, 0, 300, 900}, {}, {600, 0, 40, 480}},
        {"a region", {}, region, {10, 20, 100, 50}},
        {"a region of a window", PixelBox{5, 6, 300, 200}, region, {15, 26, 100, 50}},
        {"what is left of a region", PixelBox{0, 0, 60, 40}, region, {10, 20, 50, 20}},
        {"nothing left of it", PixelBox{0, 0, 10, 40}, region, {10, 20, 0, 20}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(PartOf({0, 0, 640, 480}, c.shown, c.area), c.part) << c.why;
}

TEST(ScreenFormats, RowsAreTakenOnlyWhereTheyAre) {
    struct Case {
        const char* why;
        std::size_t memory, offset;
        int stride;
        std::optional<int> rows;  // their stride
    };
    const Case cases[] = {
        {"tight", 4 * 8 * 3, 0, 32, 32},
        {"padded but for the last row", 40 * 2 + 32, 0, 40, 40},
        {"no stride is told", 4 * 8 * 3, 0, 0, 32},
        {"behind something", 100, 4, 32, 32},
        {"a byte too few", 4 * 8 * 3 - 1, 0, 32, {}},
        {"starts too late", 4 * 8 * 3, 1, 32, {}},
        {"starts behind the end", 8, 100, 32, {}},
        {"rows shorter than the frame", 1000, 0, 28, {}},
        {"upside down", 1000, 0, -32, {}},
    };
    for (const Case& c : cases) {
        const std::optional<PixelRows> rows = RowsOf({0, 0, 8, 3}, c.memory, c.offset, c.stride);
        ASSERT_EQ(rows.has_value(), c.rows.has_value()) << c.why;
        if (rows) {
            EXPECT_EQ(rows->stride, c.rows) << c.why;
            EXPECT_EQ(rows->offset, c.offset) << c.why;
        }
    }
}

}  // namespace
}  // namespace engine
