#include "engine/sources/screen/pixel_layout.h"

#include <fmt/format.h>

#include "platform/error.h"

namespace engine {
namespace {

struct LayoutRow {
    int bits_per_pixel;
    std::array<std::uint32_t, 3> masks;
    PixelLayout layout;
};

// clang-format off
constexpr LayoutRow kLayouts[] = {
    // bits  masks of red, green, blue                    format               bytes  channels
    {32, {0x00FF0000, 0x0000FF00, 0x000000FF}, {AV_PIX_FMT_BGR0,      4, {{{16, 8}, {8, 8},   {0, 8}}}}},
    {32, {0x000000FF, 0x0000FF00, 0x00FF0000}, {AV_PIX_FMT_RGB0,      4, {{{0, 8},  {8, 8},   {16, 8}}}}},
    {32, {0x3FF00000, 0x000FFC00, 0x000003FF}, {AV_PIX_FMT_X2RGB10LE, 4, {{{20, 10}, {10, 10}, {0, 10}}}}},
    {16, {0xF800,     0x07E0,     0x001F},     {AV_PIX_FMT_RGB565LE,  2, {{{11, 5}, {5, 6},   {0, 5}}}}},
    {16, {0x7C00,     0x03E0,     0x001F},     {AV_PIX_FMT_RGB555LE,  2, {{{10, 5}, {5, 5},   {0, 5}}}}},
};
// clang-format on

const xcb_visualtype_t* FindVisual(const xcb_screen_t& screen, xcb_visualid_t id) {
    for (auto depth = xcb_screen_allowed_depths_iterator(&screen); depth.rem > 0;
         xcb_depth_next(&depth))
        for (auto visual = xcb_depth_visuals_iterator(depth.data); visual.rem > 0;
             xcb_visualtype_next(&visual))
            if (visual.data->visual_id == id) return visual.data;
    return nullptr;
}

int BitsPerPixel(const xcb_setup_t* setup, std::uint8_t depth) {
    for (auto each = xcb_setup_pixmap_formats_iterator(setup); each.rem > 0; xcb_format_next(&each))
        if (each.data->depth == depth) return each.data->bits_per_pixel;
    return 0;
}

}  // namespace

const PixelLayout& LayoutOf(const X11Display& display, xcb_window_t window) {
    const xcb_setup_t* setup = xcb_get_setup(display.get());
    const auto geometry =
        display.Await<xcb_get_geometry_reply_t>(xcb_get_geometry(display.get(), window));
    const auto attributes = display.Await<xcb_get_window_attributes_reply_t>(
        xcb_get_window_attributes(display.get(), window));
    const xcb_visualtype_t* visual =
        attributes ? FindVisual(display.screen(), attributes->visual) : nullptr;
    const int depth = geometry ? geometry->depth : 0;
    const bool little = setup->image_byte_order == XCB_IMAGE_ORDER_LSB_FIRST;
    const bool direct = visual != nullptr && (visual->_class == XCB_VISUAL_CLASS_TRUE_COLOR ||
                                              visual->_class == XCB_VISUAL_CLASS_DIRECT_COLOR);
    if (direct && little)
        for (const LayoutRow& row : kLayouts)
            if (row.bits_per_pixel == BitsPerPixel(setup, geometry->depth) &&
                row.masks == std::array{visual->red_mask, visual->green_mask, visual->blue_mask})
                return row.layout;
    throw platform::Error(
        platform::kNotImplemented,
        fmt::format("A screen with {} bits a pixel of this kind cannot be recorded: set the "
                    "screen to 24 bits a pixel",
                    depth));
}

}  // namespace engine
