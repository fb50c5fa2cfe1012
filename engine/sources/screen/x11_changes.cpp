#include "engine/sources/screen/x11_changes.h"

#include <limits>

namespace engine {

X11Changes::X11Changes(X11Display& display, xcb_window_t window) : display_(display) {
    if (!display.Has(xcb_damage_id) || !display.Has(xcb_xfixes_id)) return;
    xcb_connection_t* server = display.get();
    // Neither extension answers anything else before it was asked for its version.
    const auto regions =
        display.Await<xcb_xfixes_query_version_reply_t>(xcb_xfixes_query_version(server, 4, 0));
    const auto damage =
        display.Await<xcb_damage_query_version_reply_t>(xcb_damage_query_version(server, 1, 1));
    if (!regions || regions->major_version < 2 || !damage) return;
    region_ = xcb_generate_id(server);
    xcb_xfixes_create_region(server, region_, 0, nullptr);
    damage_ = xcb_generate_id(server);
    xcb_damage_create(server, damage_, window, XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
}

bool X11Changes::IsToldBy(const xcb_generic_event_t& event) const {
    return AreTold() &&
           (event.response_type & 0x7F) == display_.FirstEvent(xcb_damage_id) + XCB_DAMAGE_NOTIFY;
}

std::vector<PixelBox> X11Changes::Take() {
    constexpr std::int32_t kAll = std::numeric_limits<std::int16_t>::max();
    if (!AreTold()) return {{0, 0, kAll, kAll}};
    xcb_connection_t* server = display_.get();
    xcb_damage_subtract(server, damage_, XCB_XFIXES_REGION_NONE, region_);
    const auto reply =
        display_.Await<xcb_xfixes_fetch_region_reply_t>(xcb_xfixes_fetch_region(server, region_));
    std::vector<PixelBox> boxes;
    if (!reply) return boxes;
    const xcb_rectangle_t* parts = xcb_xfixes_fetch_region_rectangles(reply.get());
    const int count = xcb_xfixes_fetch_region_rectangles_length(reply.get());
    for (int i = 0; i < count; ++i)
        boxes.push_back({parts[i].x, parts[i].y, parts[i].width, parts[i].height});
    return boxes;
}

}  // namespace engine
