#include "engine/sources/screen/area_finder.h"

#include <fmt/format.h>

#include <cctype>
#include <optional>
#include <string>
#include <vector>

#include "engine/sources/screen/named_area.h"
#include "engine/sources/screen/titled_windows.h"
#include "platform/error.h"

namespace engine {
namespace {

using Kind = ScreenArea::Kind;

std::string Capitalised(std::string text) {
    text.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
    return text;
}

[[noreturn]] void Refuse(const std::string& description) {
    throw platform::Error(platform::kInvalidArgument, description);
}

}  // namespace

AreaFinder::AreaFinder(X11Display& display, const ScreenArea& area)
    : display_(display),
      area_(area),
      window_(area.kind == Kind::Window ? FindWindow() : display.root()) {
    FindAgain();
    if (area.kind != Kind::Region || box_ == area.region) return;
    const PixelBox screen = *display_.Geometry(window_);
    Refuse(fmt::format("{} is not inside it: the screen is {}x{}", Capitalised(Describe(area)),
                       screen.width, screen.height));
}

void AreaFinder::FindAgain() {
    const std::optional<PixelBox> whole = display_.Geometry(window_);
    if (!whole) Refuse(fmt::format("{} was closed", Capitalised(Describe(area_))));
    const PixelBox inside{0, 0, whole->width, whole->height};
    if (area_.kind == Kind::Region)
        box_ = Intersection(area_.region, inside);
    else if (area_.kind == Kind::Monitor)
        box_ = Intersection(MonitorBox(), inside);
    else
        box_ = inside;
    if (box_.IsEmpty())
        Refuse(fmt::format("{} is outside the screen, which is {}x{}", Capitalised(Describe(area_)),
                           whole->width, whole->height));
}

PixelBox AreaFinder::MonitorBox() const {
    const std::vector<Monitor> monitors = display_.Monitors();
    if (!area_.name.empty()) {
        for (const Monitor& each : monitors)
            if (each.name == area_.name) return each.box;
        Refuse(
            fmt::format("There is no monitor {}: -devices lists those that there are", area_.name));
    }
    if (static_cast<std::size_t>(area_.monitor) < monitors.size())
        return monitors[static_cast<std::size_t>(area_.monitor)].box;
    Refuse(fmt::format("There is no monitor {}: there are {}, counted from 0", area_.monitor,
                       monitors.size()));
}

xcb_window_t AreaFinder::FindWindow() const {
    const std::vector<TitledWindow> windows = TitledWindows(display_);
    for (const TitledWindow& each : windows)
        if (each.title == area_.name) return each.window;
    for (const TitledWindow& each : windows)
        if (each.title.find(area_.name) != std::string::npos) return each.window;
    Refuse(fmt::format("No open window has the title \"{}\": minimised ones cannot be recorded",
                       area_.name));
}

}  // namespace engine
