#include "unit/engine/sources/screen/painter.h"

#include <cstdlib>
#include <stdexcept>

namespace test_support {

using engine::PixelBox;

namespace {

xcb_rectangle_t RectangleOf(const PixelBox& box) {
    return {static_cast<std::int16_t>(box.x), static_cast<std::int16_t>(box.y),
            static_cast<std::uint16_t>(box.width), static_cast<std::uint16_t>(box.height)};
}

}  // namespace

void Canvas::Fill(const PixelBox& box, std::uint32_t pixel) {
    const PixelBox inside = engine::Intersection(box, {0, 0, width, height});
    for (int y = inside.y; y < inside.Bottom(); ++y)
        for (int x = inside.x; x < inside.Right(); ++x) At(x, y) = pixel;
}

Canvas Canvas::Part(const PixelBox& box) const {
    Canvas part(box.width, box.height);
    Canvas whole = *this;
    for (int y = 0; y < box.height; ++y)
        for (int x = 0; x < box.width; ++x) part.At(x, y) = whole.At(box.x + x, box.y + y);
    return part;
}

Painter::Painter(const std::string& display) : connection_(xcb_connect(display.c_str(), nullptr)) {
    if (xcb_connection_has_error(connection_.get()) != 0)
        throw std::runtime_error("no display " + display);
    screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data;
    context_ = xcb_generate_id(connection_.get());
    xcb_create_gc(connection_.get(), context_, root(), 0, nullptr);
    SetPointer(1, 1, false);
    Fill(root(), {0, 0, width(), height()}, 0);
}

void Painter::Fill(xcb_window_t window, const PixelBox& box, std::uint32_t pixel) {
    const xcb_rectangle_t rectangle = RectangleOf(box);
    xcb_change_gc(connection_.get(), context_, XCB_GC_FOREGROUND, &pixel);
    xcb_poly_fill_rectangle(connection_.get(), window, context_, 1, &rectangle);
    Sync();
}

xcb_window_t Painter::Open(const PixelBox& box, const std::string& title, std::uint32_t pixel) {
    const xcb_window_t window = xcb_generate_id(connection_.get());
    const xcb_rectangle_t place = RectangleOf(box);
    xcb_create_window(connection_.get(), XCB_COPY_FROM_PARENT, window, root(), place.x, place.y,
                      place.width, place.height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL, &pixel);
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NAME,
                        XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(title.size()), title.data());
    Show(window, true);
    return window;
}

xcb_atom_t Painter::Atom(const std::string& name) {
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(connection_.get(),
                              xcb_intern_atom(connection_.get(), 0,
                                              static_cast<std::uint16_t>(name.size()), name.data()),
                              nullptr),
        &std::free);
    return reply->atom;
}

void Painter::SetProperty(xcb_window_t window, const std::string& name, xcb_atom_t type,
                          std::uint32_t value) {
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, window, Atom(name), type, 32, 1,
                        &value);
    Sync();
}

void Painter::Close(xcb_window_t window) {
    xcb_destroy_window(connection_.get(), window);
    Sync();
}

void Painter::Resize(xcb_window_t window, int width, int height) {
    const std::uint32_t size[] = {static_cast<std::uint32_t>(width),
                                  static_cast<std::uint32_t>(height)};
    xcb_configure_window(connection_.get(), window,
                         XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, size);
    Sync();
}

void Painter::Show(xcb_window_t window, bool shown) {
    if (shown)
        xcb_map_window(connection_.get(), window);
    else
        xcb_unmap_window(connection_.get(), window);
    Sync();
}

void Painter::MovePointer(int x, int y) {
    xcb_warp_pointer(connection_.get(), XCB_NONE, root(), 0, 0, 0, 0, static_cast<std::int16_t>(x),
                     static_cast<std::int16_t>(y));
    Sync();
}

void Painter::ShowPointer(int width, int height) { SetPointer(width, height, true); }

void Painter::SetPointer(int width, int height, bool seen) {
    xcb_connection_t* server = connection_.get();
    const xcb_pixmap_t shape = xcb_generate_id(server);
    const xcb_rectangle_t all = RectangleOf({0, 0, width, height});
    xcb_create_pixmap(server, 1, shape, root(), all.width, all.height);
    const xcb_gcontext_t bits = xcb_generate_id(server);
    const std::uint32_t bit = seen ? 1 : 0;
    xcb_create_gc(server, bits, shape, XCB_GC_FOREGROUND, &bit);
    xcb_poly_fill_rectangle(server, shape, bits, 1, &all);
    const xcb_cursor_t cursor = xcb_generate_id(server);
    constexpr std::uint16_t kFull = 0xFFFF;
    xcb_create_cursor(server, cursor, shape, shape, kFull, kFull, kFull, 0, 0, 0, seen ? 1 : 0,
                      seen ? 2 : 0);
    xcb_change_window_attributes(server, root(), XCB_CW_CURSOR, &cursor);
    Sync();
}

void Painter::Sync() {
    std::free(xcb_get_input_focus_reply(connection_.get(), xcb_get_input_focus(connection_.get()),
                                        nullptr));
    if (xcb_connection_has_error(connection_.get()) != 0)
        throw std::runtime_error("the display is gone");
}

}  // namespace test_support
