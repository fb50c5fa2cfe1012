// What only an X server shows: keys of other programs' windows, and a band that gets keys.
#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <QApplication>
#include <QEventLoop>
#include <QScreen>
#include <QWidget>
#include <algorithm>
#include <optional>

#include "platform/host/qt_hotkeys.h"
#include "platform/host/qt_region_frame.h"
#include "platform/host/qt_rubber_band.h"
#include "support/commands.h"
#include "support/x_server.h"

namespace {

using platform::host::Hotkeys;
using platform::host::RegionChooser;

void Key(const std::string& keys) {
    const test_support::CommandResult result = test_support::RunCommand({"xdotool", "key", keys});
    ASSERT_EQ(result.status, 0) << "xdotool is needed, see packages.txt: " << result.err;
}

/// Runs the program until `done`; the test's time limit ends it when that never comes.
template <typename Done>
void RunUntil(const Done& done) {
    QEventLoop loop;
    while (!done()) loop.processEvents(QEventLoop::WaitForMoreEvents);
}

TEST(X11, HotkeysReachTheProgramWhateverLocksAreOn) {
    int pauses = 0;
    int stops = 0;
    Hotkeys hotkeys;
    ASSERT_EQ(hotkeys.Take(QKeySequence("Ctrl+Shift+F9"), [&] { ++pauses; }),
              Hotkeys::Answer::Taken);
    ASSERT_EQ(hotkeys.Take(QKeySequence("Meta+S"), [&] { ++stops; }), Hotkeys::Answer::Taken);
    // Each is followed by the other, so that one too many would be seen.
    for (const char* lock : {"", "Caps_Lock", "Num_Lock", "Caps_Lock"}) {
        if (*lock != '\0') Key(lock);
        const int before = stops;
        Key("ctrl+F9");
        Key("ctrl+shift+F9");
        Key("super+s");
        RunUntil([&] { return stops > before; });
        EXPECT_EQ(pauses, stops) << lock;
    }
    EXPECT_EQ(stops, 4);
    Key("Num_Lock");
    hotkeys.ReleaseAll();
    Key("ctrl+shift+F9");
    ASSERT_EQ(hotkeys.Take(QKeySequence("Meta+S"), [&] { ++stops; }), Hotkeys::Answer::Taken);
    Key("super+s");
    RunUntil([&] { return stops == 5; });
    EXPECT_EQ(pauses, 4) << "released";
}

TEST(X11, AKeyThatAnotherProgramHoldsIsLeftToIt) {
    xcb_connection_t* const other = xcb_connect(nullptr, nullptr);
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(other)).data->root;
    constexpr xcb_keycode_t kF10 = 76;
    // With Num Lock only: the others are free.
    EXPECT_EQ(
        xcb_request_check(
            other, xcb_grab_key_checked(other, 0, root,
                                        XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_2,
                                        kF10, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)),
        nullptr);
    Hotkeys hotkeys;
    EXPECT_EQ(Hotkeys::Try(QKeySequence("Ctrl+Shift+F10")), Hotkeys::Answer::Held);
    EXPECT_EQ(hotkeys.Take(QKeySequence("Ctrl+Shift+F10"), [] {}), Hotkeys::Answer::Held);
    EXPECT_EQ(Hotkeys::Try(QKeySequence("Ctrl+Shift+F11")), Hotkeys::Answer::Taken);
    EXPECT_EQ(hotkeys.Take(QKeySequence("Ctrl+Shift+F11"), [] {}), Hotkeys::Answer::Taken);
    EXPECT_EQ(hotkeys.Take(QKeySequence(QKeyCombination(Qt::Key_LaunchMail)), [] {}),
              Hotkeys::Answer::Unknown);
    xcb_disconnect(other);
}

TEST(X11, TheFrameIsSeenButNotInItsRegion) {
    const QRect region(40, 30, 101, 51);
    const auto grab = [&](const QRect& box) {
        return QGuiApplication::primaryScreen()
            ->grabWindow(0, box.x(), box.y(), box.width(), box.height())
            .toImage();
    };
    const QImage before = grab(region);
    platform::host::RegionFrame frame;
    frame.ShowAround(region);
    const QPoint beside[] = {{39, 29}, {141, 50}, {90, 29}, {90, 81}, {39, 81}};
    const auto is_framed = [&](QPoint place) {
        return grab(QRect(place, QSize(1, 1))).pixelColor(0, 0) == QColor(0xff, 0x50, 0x30);
    };
    QEventLoop loop;
    while (!std::all_of(std::begin(beside), std::end(beside), is_framed)) loop.processEvents();
    EXPECT_EQ(grab(region), before);
    frame.Hide();
    while (std::any_of(std::begin(beside), std::end(beside), is_framed)) loop.processEvents();
}

TEST(X11, EscapeEndsTheRubberBand) {
    RegionChooser chooser;
    bool ended = false;
    std::optional<QRect> region;
    chooser.Start([&](std::optional<QRect> pixels) {
        ended = true;
        region = pixels;
    });
    const auto shown = [] {
        const QWidgetList all = QApplication::topLevelWidgets();
        return std::any_of(all.begin(), all.end(), [](const QWidget* widget) {
            return widget->isVisible() && widget->size() == QSize(640, 480);
        });
    };
    RunUntil(shown);
    Key("Escape");
    RunUntil([&] { return ended; });
    EXPECT_FALSE(region);
    EXPECT_FALSE(shown());
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (testing::GTEST_FLAG(list_tests)) return RUN_ALL_TESTS();
    const test_support::XServer server("640x480x24");
    qunsetenv("WAYLAND_DISPLAY");
    qputenv("DISPLAY", QByteArray::fromStdString(server.display()));
    qputenv("QT_QPA_PLATFORM", "xcb");
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
