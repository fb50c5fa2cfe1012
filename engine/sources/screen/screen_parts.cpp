#include "engine/sources/screen/screen_parts.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>

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

// What belongs to the desktop itself, or comes and goes with a program's own window.
constexpr std::string_view kFurniture[] = {
    "_NET_WM_WINDOW_TYPE_DESKTOP",      "_NET_WM_WINDOW_TYPE_DOCK",
    "_NET_WM_WINDOW_TYPE_TOOLBAR",      "_NET_WM_WINDOW_TYPE_MENU",
    "_NET_WM_WINDOW_TYPE_SPLASH",       "_NET_WM_WINDOW_TYPE_DROPDOWN_MENU",
    "_NET_WM_WINDOW_TYPE_POPUP_MENU",   "_NET_WM_WINDOW_TYPE_TOOLTIP",
    "_NET_WM_WINDOW_TYPE_NOTIFICATION", "_NET_WM_WINDOW_TYPE_COMBO",
    "_NET_WM_WINDOW_TYPE_DND",
};

bool IsFurniture(const X11Display& display, xcb_window_t window) {
    const auto types = display.Numbers(window, "_NET_WM_WINDOW_TYPE");
    if (types.empty()) return false;
    // The first is the one that fits best; the others are for desktops that do not know it.
    return std::ranges::any_of(
        kFurniture, [&](std::string_view name) { return display.Atom(name) == types.front(); });
}

bool IsOwn(const X11Display& display, xcb_window_t window) {
    const auto process = display.Numbers(window, "_NET_WM_PID");
    return !process.empty() && process.front() == static_cast<std::uint32_t>(getpid());
}

bool IsWorthRecording(const X11Display& display, xcb_window_t window) {
    return IsOnScreen(display, window) && !IsFurniture(display, window) && !IsOwn(display, window);
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
        if (IsWorthRecording(display, each.window))
            parts.windows.push_back({each.title, "window:" + each.title});
    return parts;
}

}  // namespace engine
