// What names a part of a screen, how large it is, and how changed parts of frames are joined.
#include "engine/sources/screen/named_area.h"

#include "engine/sources/screen/damage_boxes.h"
#include "support/error_of.h"
#include "support/x_server.h"
#include "unit/engine/sources/screen/painter.h"

namespace engine {
namespace {

using Kind = ScreenArea::Kind;
using test_support::ErrorOf;
using test_support::Painter;
using test_support::XServer;

TEST(ScreenAreas, AreNamedByTexts) {
    struct Case {
        const char* text;
        ScreenArea area;
    };
    const Case cases[] = {
        {"", {}},
        {"region:640x480+10+20", {Kind::Region, {10, 20, 640, 480}}},
        {"region:2x2+0+0", {Kind::Region, {0, 0, 2, 2}}},
        {"monitor:0", {Kind::Monitor, {}, 0}},
        {"monitor:12", {Kind::Monitor, {}, 12}},
        {"window:a: b 1x1+2+3", {Kind::Window, {}, 0, "a: b 1x1+2+3"}},
    };
    for (const Case& each : cases)
        EXPECT_TRUE(ParseScreenArea(each.text) == each.area) << each.text;
    for (const char* text :
         {"screen", "region", "region:", "region:640x480", "region:640x480+1", "region:640x480+1+",
          "region:640x480+1+-2", "region:640x480-1+2", "region:0x480+1+2", "region:1x480+1+2",
          "region:640x480+1+2 ", "region:640x480+1+99999999999", "monitor:", "monitor:-1",
          "monitor:1x", "monitor:left", "window:", "windows:a", "Region:640x480+10+20"})
        EXPECT_THAT(ErrorOf([&] { ParseScreenArea(text); }).description(),
                    testing::HasSubstr("region:WxH+X+Y, monitor:N or window:TITLE"))
            << text;
}

TEST(ScreenAreas, HaveThePointerUnlessItIsOff) {
    EXPECT_TRUE(ParsePointer(""));
    EXPECT_TRUE(ParsePointer("on"));
    EXPECT_FALSE(ParsePointer("off"));
    EXPECT_THAT(ErrorOf([] { ParsePointer("no"); }).description(), testing::HasSubstr("on or off"));
}

TEST(ScreenAreas, AreTheDevicesOfTheList) {
    EXPECT_TRUE(AreaOfDevice("x11") == ScreenArea{});
    EXPECT_TRUE(AreaOfDevice("x11:monitor:DP-1") == (ScreenArea{Kind::Monitor, {}, 0, "DP-1"}));
    for (const char* id : {"portal", "x11:", "x11:monitor:", "/dev/video0"})
        EXPECT_THAT(ErrorOf([&] { AreaOfDevice(id); }).description(),
                    testing::HasSubstr("-devices"))
            << id;
}

TEST(ScreenAreas, HaveTheSizeThatTheyHaveOnTheScreen) {
    const XServer server("320x240x24");
    setenv("DISPLAY", server.display().c_str(), 1);
    server.Randr({"--setmonitor", "left", "120/100x240/200+0+0", "screen"});
    server.Randr({"--setmonitor", "right", "200/100x200/200+120+0", "none"});
    Painter painter(server.display());
    painter.Open({10, 10, 40, 30}, "Notes", 1);
    painter.Open({20, 20, 41, 31}, "Old Notes, read", 1);
    painter.Open({30, 30, 42, 32}, "Old Notes", 1);
    painter.Show(painter.Open({40, 40, 43, 33}, "Old", 1), false);

    struct Case {
        const char* why;
        ScreenArea area;
        int width, height;
    };
    const Case cases[] = {
        {"the whole screen", {}, 320, 240},
        {"a region up to the corner", ParseScreenArea("region:20x30+300+210"), 20, 30},
        {"the first monitor", ParseScreenArea("monitor:0"), 120, 240},
        {"the second", ParseScreenArea("monitor:1"), 200, 200},
        {"the same by name", AreaOfDevice("x11:monitor:right"), 200, 200},
        {"the whole title before those in front", ParseScreenArea("window:Notes"), 40, 30},
        {"a part of a title: the foremost, open one", ParseScreenArea("window:Old"), 42, 32},
        {"another part", ParseScreenArea("window:read"), 41, 31},
    };
    for (const Case& each : cases) {
        const ScreenSize size = SizeNow(each.area);
        EXPECT_EQ(std::pair(size.width, size.height), std::pair(each.width, each.height))
            << each.why;
    }

    struct Refusal {
        const char* text;
        const char* error;
    };
    // clang-format off
    const Refusal refusals[] = {
        {"region:21x30+300+210", "The region 21x30+300+210 of the screen is not inside it: the screen is 320x240"},
        {"region:20x30+400+0", "The region 20x30+400+0 of the screen is outside the screen, which " "is 320x240"},
        {"monitor:2", "There is no monitor 2: there are 2, counted from 0"},
        {"window:notes", "No open window has the title \"notes\": minimised ones cannot be recorded"},
    };
    // clang-format on
    for (const Refusal& each : refusals)
        EXPECT_EQ(ErrorOf([&] { SizeNow(ParseScreenArea(each.text)); }).description(), each.error);
    EXPECT_EQ(ErrorOf([] { SizeNow(AreaOfDevice("x11:monitor:up")); }).description(),
              "There is no monitor up: -devices lists those that there are");

    setenv("DISPLAY", "", 1);
    EXPECT_THAT(ErrorOf([] { SizeNow({}); }).description(),
                testing::HasSubstr("DISPLAY is not set"));
    setenv("DISPLAY", (server.display() + "99").c_str(), 1);
    EXPECT_THAT(ErrorOf([] { SizeNow({}); }).description(),
                testing::HasSubstr("no X server answers at"));
}

TEST(DamageBoxes, AreFewAndCoverAllThatWasAdded) {
    struct Case {
        const char* why;
        std::vector<PixelBox> added;
        std::size_t fewest, most;
    };
    std::vector<PixelBox> corners;
    for (int i = 0; i < 40; ++i) corners.push_back({i % 8 * 1000, i / 8 * 1000, 3, 4});
    // clang-format off
    const Case cases[] = {
        {"nothing", {{5, 5, 0, 10}}, 0, 0},
        {"lines of text next to each other", {{0, 0, 500, 16}, {0, 16, 300, 16}, {0, 32, 9, 9}}, 1, 1},
        {"far from each other", {{0, 0, 10, 10}, {1000, 900, 10, 10}}, 2, 2},
        {"one between makes one of both", {{0, 0, 100, 100}, {180, 0, 100, 100}, {90, 0, 100, 100}}, 1, 1},
        {"too many are joined at any price", corners, 2, DamageBoxes::kMost},
    };
    // clang-format on
    for (const Case& each : cases) {
        SCOPED_TRACE(each.why);
        DamageBoxes boxes;
        for (const PixelBox& box : each.added) boxes.Add(box);
        EXPECT_GE(boxes.boxes().size(), each.fewest);
        EXPECT_LE(boxes.boxes().size(), each.most);
        for (const PixelBox& box : each.added) {
            const auto covers = [&](const PixelBox& other) {
                return box.IsEmpty() || Intersection(other, box) == box;
            };
            EXPECT_TRUE(box.IsEmpty() ||
                        std::any_of(boxes.boxes().begin(), boxes.boxes().end(), covers));
        }
    }
}

}  // namespace
}  // namespace engine
