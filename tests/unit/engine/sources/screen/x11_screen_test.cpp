// Recording an X11 screen, on displays of the test's own.
#include "engine/sources/screen/x11_screen.h"

#include <signal.h>

#include <cstring>
#include <thread>

#include "engine/base/av/frame_damage.h"
#include "engine/sources/screen/named_area.h"
#include "support/error_of.h"
#include "support/x_server.h"
#include "unit/engine/sources/screen/painter.h"

namespace engine {
namespace {

using test_support::Canvas;
using test_support::ErrorOf;
using test_support::Painter;
using test_support::XServer;

constexpr Ticks kSecond{Ticks::kPerSecond};
constexpr Ticks kRest = Ticks::FromMilliseconds(280);  // after which a frame is given again

Canvas CanvasOf(const AVFrame& frame) {
    const AVPixFmtDescriptor* layout =
        av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    const int bytes = layout->comp[0].step;
    int bits = 0;
    for (int i = 0; i < 3; ++i) bits += layout->comp[i].depth;
    Canvas canvas(frame.width, frame.height);
    for (int y = 0; y < frame.height; ++y)
        for (int x = 0; x < frame.width; ++x) {
            std::uint32_t pixel = 0;
            std::memcpy(&pixel, frame.data[0] + y * frame.linesize[0] + x * bytes,
                        static_cast<std::size_t>(bytes));
            canvas.At(x, y) = pixel & ((1U << bits) - 1);
        }
    return canvas;
}

// A display, what is drawn on it, and a source that records it.
class Recording {
  public:
    explicit Recording(const std::string& screen = "320x240x24",
                       const std::vector<std::string>& options = {})
        : server(screen, options),
          painter(server.display()),
          seen(painter.width(), painter.height()) {
        setenv("DISPLAY", server.display().c_str(), 1);
    }

    void Open(const std::string& area = "", std::int32_t rate = 100000) {
        source = OpenX11Screen(ParseScreenArea(area), rate, frames);
    }

    void Fill(const PixelBox& box, std::uint32_t pixel) {
        painter.Fill(painter.root(), box, pixel);
        seen.Fill(box, pixel);
    }

    FrameHandle Next() {
        FrameHandle frame;
        EXPECT_TRUE(source->Read(frame));
        EXPECT_GT(frame->pts, last_pts);
        last_pts = frame->pts;
        CheckDamage(*frame);
        return frame;
    }

    // The next one that is not a repetition of the last, which come when nothing happens for
    // a while.
    FrameHandle NextChange() {
        for (;;) {
            const std::int64_t before = last_pts;
            FrameHandle frame = Next();
            if (frame->data[0] != last_pixels || frame->pts < before + kRest.count) {
                last_pixels = frame->data[0];
                return frame;
            }
        }
    }

    // Nothing but what is told has changed since the frame before.
    void CheckDamage(const AVFrame& frame) {
        damage.Add(frame);
        Canvas now = CanvasOf(frame);
        const bool comparable = shown && shown->pixels.size() == now.pixels.size();
        int untold = 0;
        for (int y = 0; comparable && y < frame.height; ++y)
            for (int x = 0; x < frame.width; ++x)
                if (now.At(x, y) != shown->At(x, y) &&
                    Intersection(damage.Changed(), {x, y, 1, 1}).IsEmpty())
                    ++untold;
        EXPECT_EQ(untold, 0);
        damage.Restart();
        shown = std::move(now);
    }

    // What ends the reading, in words.
    std::string ErrorOfReading() const {
        return ErrorOf([&] {
                   for (FrameHandle frame; source->Read(frame);) {
                   }
               })
            .description();
    }

    XServer server;
    Painter painter;
    Canvas seen;  // what the screen shows, without the pointer
    FramePool frames;
    std::unique_ptr<LiveSource> source;
    std::int64_t last_pts = 0;
    const std::uint8_t* last_pixels = nullptr;
    DamageSum damage;
    std::optional<Canvas> shown;
};

struct ServerCase {
    const char* why;
    const char* screen;
    std::vector<std::string> options;
    AVPixelFormat format;
};

const ServerCase kServers[] = {
    {"all extensions", "320x240x24", {}, AV_PIX_FMT_BGR0},
    {"no shared memory", "320x240x24", {"-extension", "MIT-SHM"}, AV_PIX_FMT_BGR0},
    {"odd size", "321x241x24", {}, AV_PIX_FMT_BGR0},
    {"65536 colours, odd size", "321x240x16", {}, AV_PIX_FMT_RGB565LE},
    {"32768 colours, not shared", "321x240x15", {"-extension", "MIT-SHM"}, AV_PIX_FMT_RGB555LE},
    {"ten bits a colour", "320x240x30", {}, AV_PIX_FMT_X2RGB10LE},
};

// Small and large, narrow and wide, at all edges.
const PixelBox kDrawn[] = {
    {0, 0, 320, 240}, {5, 7, 3, 2},       {0, 0, 1, 1},      {319, 239, 1, 1},   {10, 0, 9, 240},
    {0, 100, 320, 5}, {40, 40, 200, 150}, {300, 10, 20, 20}, {100, 230, 50, 10},
};

TEST(X11Screen, TellsWhereItHasChanged) {
    Recording recording;
    recording.Open();
    recording.NextChange();
    const PixelBox box{40, 50, 30, 20};
    recording.Fill(box, 0x123456);
    const auto damage = DamageOf(*recording.NextChange());
    ASSERT_TRUE(damage);
    EXPECT_EQ(Intersection(damage->changed, box), box);
    EXPECT_LT(damage->changed.Pixels(), 320 * 240 / 2);
}

TEST(X11Screen, EachChangeGivesOneFrameThatStaysAsItIs) {
    for (const ServerCase& each : kServers) {
        SCOPED_TRACE(each.why);
        Recording recording(each.screen, each.options);
        recording.Open();
        std::vector<std::pair<FrameHandle, Canvas>> held;
        held.emplace_back(recording.NextChange(), recording.seen);
        for (int round = 0; round < 3; ++round) {
            std::uint32_t pixel = 0x1234U * static_cast<unsigned>(round + 1);
            for (const PixelBox& box : kDrawn) {
                pixel = (pixel * 7 + 11) & 0x7FFF;
                recording.Fill(box, pixel);
                FrameHandle frame = recording.NextChange();
                EXPECT_EQ(frame->format, each.format);
                EXPECT_TRUE(CanvasOf(*frame) == recording.seen) << "round " << round;
                if (round != 1) held.emplace_back(std::move(frame), recording.seen);
            }
        }
        for (const auto& [frame, seen] : held) EXPECT_TRUE(CanvasOf(*frame) == seen);
        FrameHandle last = std::move(held.back().first);
        recording.source.reset();
        EXPECT_TRUE(CanvasOf(*last) == recording.seen) << "when the source is gone";
    }
}

TEST(X11Screen, WithoutNewsOfChangesThereIsAFrameEachTime) {
    for (const char* extension : {"DAMAGE", "XFIXES"}) {
        SCOPED_TRACE(extension);
        Recording recording("320x240x24", {"-extension", extension});
        recording.Open();
        for (std::uint32_t pixel = 1; pixel < 5; ++pixel) {
            recording.Fill({10, 10, 50, 50}, pixel);
            EXPECT_TRUE(CanvasOf(*recording.Next()) == recording.seen);
            EXPECT_TRUE(CanvasOf(*recording.Next()) == recording.seen);
        }
    }
}

TEST(X11Screen, WhatCannotBeRecordedIsRefused) {
    struct Case {
        const char* screen;
        std::vector<std::string> options;
        const char* area;
        const char* error;
    };
    const Case cases[] = {
        {"320x240x8", {}, "", "A screen with 8 bits a pixel of this kind cannot be recorded"},
        {"320x240x24", {"-extension", "Composite"}, "window:Notes", "lacks the Composite"},
        {"320x240x24", {}, "window:Letters", "No open window has the title \"Letters\""},
        {"320x240x24", {}, "region:10x10+315+0", "is not inside it: the screen is 320x240"},
    };
    for (const Case& each : cases) {
        Recording recording(each.screen, each.options);
        recording.painter.Open({10, 10, 50, 50}, "Notes", 0);
        EXPECT_THAT(ErrorOf([&] { recording.Open(each.area); }).description(),
                    testing::HasSubstr(each.error));
    }
}

TEST(X11Screen, AnIdleScreenIsRepeatedTwiceSoonAndThenEachSecond) {
    Recording recording;
    recording.Open();
    const FrameHandle first = recording.Next();
    const FrameHandle second = recording.Next();
    const FrameHandle third = recording.Next();
    const FrameHandle fourth = recording.Next();
    EXPECT_GE(second->pts - first->pts, kRest.count);
    EXPECT_GE(third->pts - second->pts, kRest.count);
    EXPECT_LT(third->pts - first->pts, kSecond.count);
    EXPECT_GE(fourth->pts - third->pts, kSecond.count);
    EXPECT_EQ(third->data[0], first->data[0]) << "nothing is fetched or copied";
    EXPECT_EQ(recording.source->TakeMissed(), 0);
    recording.Fill({1, 1, 5, 5}, 77);
    EXPECT_TRUE(CanvasOf(*recording.NextChange()) == recording.seen);
}

TEST(X11Screen, ThePointerIsDrawnOverTheFrame) {
    for (const ServerCase& each : kServers) {
        SCOPED_TRACE(each.why);
        Recording recording(each.screen, each.options);
        recording.painter.MovePointer(60, 60);
        recording.Open();
        recording.Next();
        const std::uint32_t white = each.format == AV_PIX_FMT_RGB555LE    ? 0x7FFF
                                    : each.format == AV_PIX_FMT_RGB565LE  ? 0xFFFF
                                    : each.format == AV_PIX_FMT_X2RGB10LE ? 0x3FFFFFFF
                                                                          : 0xFFFFFF;
        const auto expect_pointer = [&](const PixelBox& pointer) {
            Canvas expected = recording.seen;
            expected.Fill(pointer, white);
            EXPECT_TRUE(CanvasOf(*recording.NextChange()) == expected);
        };
        recording.painter.ShowPointer(8, 9);
        expect_pointer({59, 58, 8, 9});
        recording.painter.MovePointer(150, 100);
        expect_pointer({149, 98, 8, 9});
        recording.Fill({140, 90, 12, 60}, 99);
        expect_pointer({149, 98, 8, 9});
        recording.painter.MovePointer(0, 0);
        expect_pointer({-1, -2, 8, 9});
        recording.painter.MovePointer(319, 239);
        expect_pointer({318, 237, 8, 9});
        recording.painter.ShowPointer(3, 3);
        expect_pointer({318, 237, 3, 3});
    }
}

TEST(X11Screen, ThePointerIsLeftOutWhereItIsNotWanted) {
    Recording recording("320x240x24", {});
    recording.painter.ShowPointer(8, 9);
    recording.painter.MovePointer(60, 60);
    ScreenArea area;
    area.pointer = false;
    recording.source = OpenX11Screen(area, 100000, recording.frames);
    EXPECT_TRUE(CanvasOf(*recording.NextChange()) == recording.seen);
    recording.painter.MovePointer(100, 100);
    recording.Fill({99, 99, 20, 20}, 77);
    EXPECT_TRUE(CanvasOf(*recording.NextChange()) == recording.seen);
}

TEST(X11Screen, ARegionShowsWhatHappensInIt) {
    Recording recording;
    const PixelBox region{50, 60, 101, 80};
    recording.painter.ShowPointer(8, 8);
    recording.painter.MovePointer(300, 200);
    recording.Open("region:101x80+50+60");
    EXPECT_TRUE(CanvasOf(*recording.NextChange()) == recording.seen.Part(region));
    recording.Fill({0, 0, 70, 70}, 5);
    const FrameHandle before = recording.NextChange();
    EXPECT_TRUE(CanvasOf(*before) == recording.seen.Part(region));
    recording.Fill({0, 0, 50, 240}, 6);
    recording.painter.MovePointer(200, 200);
    const FrameHandle repeated = recording.Next();
    EXPECT_GE(repeated->pts - before->pts, kRest.count) << "changes outside are none";
    recording.Fill({150, 139, 20, 20}, 7);
    EXPECT_TRUE(CanvasOf(*recording.NextChange()) == recording.seen.Part(region));
    recording.painter.MovePointer(61, 72);
    Canvas expected = recording.seen;
    expected.Fill({60, 70, 8, 8}, 0xFFFFFF);
    EXPECT_TRUE(CanvasOf(*recording.NextChange()) == expected.Part(region));
}

TEST(X11Screen, AMonitorIsAPartOfTheScreen) {
    Recording recording;
    recording.server.Randr({"--setmonitor", "left", "120/100x240/200+0+0", "screen"});
    recording.server.Randr({"--setmonitor", "right", "200/100x200/200+120+0", "none"});
    recording.Open("monitor:1");
    recording.Fill({110, 150, 100, 90}, 5);
    EXPECT_TRUE(CanvasOf(*recording.NextChange()) == recording.seen.Part({120, 0, 200, 200}));
}

TEST(X11Screen, AWindowIsRecordedUnderOthersAndInItsOwnSize) {
    Recording recording;
    const xcb_window_t window = recording.painter.Open({200, 150, 90, 70}, "Notes", 10);
    recording.Open("window:Note");
    Canvas inside(90, 70);
    inside.Fill({0, 0, 90, 70}, 10);
    EXPECT_TRUE(CanvasOf(*recording.NextChange()) == inside);

    recording.painter.Open({180, 130, 60, 60}, "In front", 11);
    recording.painter.Fill(window, {5, 5, 60, 20}, 12);
    inside.Fill({5, 5, 60, 20}, 12);
    EXPECT_TRUE(CanvasOf(*recording.NextChange()) == inside);

    recording.painter.Resize(window, 111, 85);  // which empties it
    recording.painter.Fill(window, {0, 0, 111, 85}, 13);
    Canvas larger(111, 85);
    larger.Fill({0, 0, 111, 85}, 13);
    EXPECT_TRUE(CanvasOf(*recording.NextChange()) == larger);

    recording.painter.Show(window, false);
    const FrameHandle hidden = recording.Next();
    EXPECT_TRUE(CanvasOf(*hidden) == larger) << "the last frame stays";
    recording.painter.Show(window, true);
    recording.painter.Fill(window, {0, 0, 111, 85}, 14);
    larger.Fill({0, 0, 111, 85}, 14);
    EXPECT_TRUE(CanvasOf(*recording.NextChange()) == larger);

    recording.painter.Close(window);
    EXPECT_EQ(recording.ErrorOfReading(), "The window \"Note\" was closed");
}

TEST(X11Screen, AChangeOfTheScreensSizeIsFollowed) {
    Recording recording;
    recording.Open();
    recording.Next();
    std::unique_ptr<LiveSource> region =
        OpenX11Screen(ParseScreenArea("region:100x100+150+100"), 100000, recording.frames);
    for (const auto& [width, height] : {std::pair(200, 160), std::pair(320, 240)}) {
        recording.server.Resize(width, height);
        recording.Fill({0, 0, width, height}, 8);
        const FrameHandle frame = recording.NextChange();
        EXPECT_TRUE(CanvasOf(*frame) == recording.seen.Part({0, 0, width, height}));
        FrameHandle part;
        ASSERT_TRUE(region->Read(part));
        EXPECT_EQ(std::pair(part->width, part->height),
                  std::pair(std::min(100, width - 150), std::min(100, height - 100)));
    }
}

TEST(X11Screen, FramesKeepToTheRate) {
    Recording recording;
    recording.Open("", 50000);
    std::atomic<bool> stop = false;
    std::thread drawing([&] {
        Painter painter(recording.server.display());
        for (std::uint32_t pixel = 0; !stop; ++pixel)
            painter.Fill(painter.root(), {10, 10, 40, 40}, pixel);
    });
    std::vector<std::int64_t> times;
    for (int i = 0; i < 30; ++i) times.push_back(recording.Next()->pts);
    stop = true;
    drawing.join();
    const std::int64_t interval = kSecond.count / 50;
    for (std::size_t i = 0; i < times.size(); ++i)
        for (std::size_t j = i + 1; j < times.size(); ++j)
            EXPECT_GE(times[j] - times[i],
                      static_cast<std::int64_t>(j - i) * interval - interval / 4);
}

TEST(X11Screen, WhatALateReaderMissesIsCounted) {
    Recording recording;
    recording.Open("", 100000);
    const std::int64_t first = recording.Next()->pts;
    const auto late = [&](int intervals) {
        while (CaptureNow().count < recording.last_pts + intervals * kSecond.count / 100)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    };
    late(8);
    recording.Next();
    recording.source->TakeMissed();
    EXPECT_GE(recording.last_pts, first + kRest.count) << "nothing was to be had";
    late(8);
    recording.Fill({0, 0, 9, 9}, 3);
    recording.NextChange();
    EXPECT_GE(recording.source->TakeMissed(), 6);
    EXPECT_EQ(recording.source->TakeMissed(), 0);
}

TEST(X11Screen, WakeEndsReadingAlsoWhenTheServerHangs) {
    for (const bool hangs : {false, true}) {
        SCOPED_TRACE(hangs);
        Recording recording;
        recording.Open();
        recording.Next();
        if (hangs) recording.server.Signal(SIGSTOP);
        std::thread waking([&] { recording.source->Wake(); });
        FrameHandle frame;
        while (recording.source->Read(frame)) {
        }
        waking.join();
        EXPECT_FALSE(recording.source->Read(frame));
        if (hangs) recording.server.Signal(SIGCONT);
    }
}

TEST(X11Screen, AServerThatGoesIsAnError) {
    Recording recording;
    recording.Open();
    recording.Next();
    std::thread killing([&] { recording.server.Kill(); });
    const std::string said = recording.ErrorOfReading();
    killing.join();
    EXPECT_EQ(said, "The X server at \"" + recording.server.display() + "\" is gone");
    EXPECT_THROW(OpenX11Screen({}, 30000, recording.frames), platform::Error);
}

}  // namespace
}  // namespace engine
