#include "engine/sources/area_finder.h"

#include <fmt/format.h>

#include <cctype>
#include <optional>
#include <string>
#include <utility>
#include <vector>

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

bool IsViewable(X11Display& display, xcb_window_t window) {
    const auto reply = Own(xcb_get_window_attributes_reply(
        display.get(), xcb_get_window_attributes(display.get(), window), nullptr));
    return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE &&
           reply->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT;
}

// Windows that people see the titles of: those with a title that stand in no other one with one.
struct TitledWindow {
    xcb_window_t window;
    std::string title;
};

void AddTitled(X11Display& display, xcb_window_t parent, std::vector<TitledWindow>& found) {
    const auto tree =
        Own(xcb_query_tree_reply(display.get(), xcb_query_tree(display.get(), parent), nullptr));
    if (!tree) return;  // closed in the meantime
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    for (int i = xcb_query_tree_children_length(tree.get()) - 1; i >= 0; --i) {  // foremost first
        if (!IsViewable(display, children[i])) continue;
        std::string title = display.Title(children[i]);
        if (title.empty())
            AddTitled(display, children[i], found);
        else
            found.push_back({children[i], std::move(title)});
    }
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
    std::vector<TitledWindow> windows;
    AddTitled(display_, display_.root(), windows);
    for (const TitledWindow& each : windows)
        if (each.title == area_.name) return each.window;
    for (const TitledWindow& each : windows)
        if (each.title.find(area_.name) != std::string::npos) return each.window;
    Refuse(fmt::format("No open window has the title \"{}\": minimised ones cannot be recorded",
                       area_.name));
}

}  // namespace engine
