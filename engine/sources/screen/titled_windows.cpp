#include "engine/sources/screen/titled_windows.h"

#include <utility>

namespace engine {
namespace {

bool IsViewable(X11Display& display, xcb_window_t window) {
    const auto reply = Own(xcb_get_window_attributes_reply(
        display.get(), xcb_get_window_attributes(display.get(), window), nullptr));
    return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE &&
           reply->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT;
}

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

std::vector<TitledWindow> TitledWindows(X11Display& display) {
    std::vector<TitledWindow> found;
    AddTitled(display, display.root(), found);
    return found;
}

}  // namespace engine
