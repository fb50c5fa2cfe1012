#include "engine/sources/screen/screen_parts.h"

#include <fmt/format.h>

#include "engine/sources/screen/screens.h"
#include "engine/sources/screen/titled_windows.h"
#include "engine/sources/screen/x11_display.h"

namespace engine {
namespace {

// Window managers and the like keep windows where nobody sees them.
bool IsOnScreen(const X11Display& display, xcb_window_t window) {
    const auto box = display.Geometry(window);
    const auto screen = display.Geometry(display.root());
    return box && screen && !Intersection(*box, {0, 0, screen->width, screen->height}).IsEmpty();
}

}  // namespace

platform::ScreenParts FindScreenParts() {
    platform::ScreenParts parts;
    parts.chosen_by_desktop = Screens().access == ScreenAccess::Portal;
    if (parts.chosen_by_desktop) return parts;
    X11Display display;
    const std::vector<Monitor> monitors = display.Monitors();
    for (std::size_t i = 0; i < monitors.size() && monitors.size() > 1; ++i)
        parts.monitors.push_back({fmt::format("Monitor {}: {}, {}x{}", i, monitors[i].name,
                                              monitors[i].box.width, monitors[i].box.height),
                                  fmt::format("monitor:{}", i)});
    for (const TitledWindow& each : TitledWindows(display))
        if (IsOnScreen(display, each.window))
            parts.windows.push_back({each.title, "window:" + each.title});
    return parts;
}

}  // namespace engine
