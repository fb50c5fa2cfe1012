// Which windows a person is offered to record.
#include "engine/sources/screen/screen_parts.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include "support/x_server.h"
#include "unit/engine/sources/screen/painter.h"

namespace engine {
namespace {

TEST(ScreenParts, AreTheWindowsThatPeopleWorkIn) {
    const test_support::XServer server("320x240x24");
    setenv("DISPLAY", server.display().c_str(), 1);
    unsetenv("WAYLAND_DISPLAY");
    unsetenv("XDG_SESSION_TYPE");
    test_support::Painter painter(server.display());
    const auto open = [&](const std::string& title, const std::string& type,
                          std::uint32_t process) {
        const xcb_window_t window = painter.Open({10, 10, 40, 30}, title, 1);
        if (!type.empty())
            painter.SetProperty(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM,
                                painter.Atom("_NET_WM_WINDOW_TYPE_" + type));
        if (process != 0) painter.SetProperty(window, "_NET_WM_PID", XCB_ATOM_CARDINAL, process);
    };
    const auto own = static_cast<std::uint32_t>(getpid());
    open("without a type", "", 0);
    open("of another process", "NORMAL", own + 1);
    open("a question", "DIALOG", 0);
    open("a palette", "UTILITY", 0);
    open("panel", "DOCK", 0);
    open("desktop", "DESKTOP", 0);
    open("balloon", "NOTIFICATION", 0);
    open("this program", "NORMAL", own);
    std::vector<std::string> choices;
    for (const platform::ScreenPart& window : FindScreenParts().windows)
        choices.push_back(window.choice);
    EXPECT_THAT(choices,
                testing::ElementsAre("window:a palette", "window:a question",
                                     "window:of another process", "window:without a type"));
}

}  // namespace
}  // namespace engine
