#include "engine/sources/screen/x11_pointer.h"

#include <cstring>
#include <utility>

namespace engine {
namespace {

// Colours of the pointer are multiplied with its opacity already.
std::uint32_t Over(std::uint32_t image, std::uint32_t argb, const PixelLayout& layout) {
    const std::uint32_t see_through = 255 - (argb >> 24);
    for (std::size_t i = 0; i < layout.channels.size(); ++i) {
        const auto [shift, bits] = layout.channels[i];
        const std::uint32_t most = (1U << bits) - 1;
        const std::uint32_t below = (image >> shift) & most;
        const std::uint32_t above = (argb >> (16 - 8 * i)) & 255;
        const std::uint32_t mixed = (above * most + below * see_through + 127) / 255;
        image = (image & ~(most << shift)) | (std::min(mixed, most) << shift);
    }
    return image;
}

template <typename Pixel>
void DrawRow(std::uint8_t* row, const std::uint32_t* look, int count, const PixelLayout& layout) {
    for (int i = 0; i < count; ++i, row += sizeof(Pixel)) {
        if (look[i] == 0) continue;
        Pixel pixel = 0;
        std::memcpy(&pixel, row, sizeof pixel);
        pixel = static_cast<Pixel>(Over(pixel, look[i], layout));
        std::memcpy(row, &pixel, sizeof pixel);
    }
}

}  // namespace

X11Pointer::X11Pointer(X11Display& display, xcb_window_t window, bool shown)
    : display_(display), window_(window), available_(shown && display.Has(xcb_xfixes_id)) {
    if (!available_) return;
    xcb_connection_t* server = display.get();
    // The extension answers nothing else before it was asked for its version.
    Own(xcb_xfixes_query_version_reply(server, xcb_xfixes_query_version(server, 4, 0), nullptr));
    xcb_xfixes_select_cursor_input(server, display.root(),
                                   XCB_XFIXES_CURSOR_NOTIFY_MASK_DISPLAY_CURSOR);
}

void X11Pointer::HandleEvent(const xcb_generic_event_t& event) {
    if (!available_) return;
    const int cursor_notify = display_.FirstEvent(xcb_xfixes_id) + XCB_XFIXES_CURSOR_NOTIFY;
    if ((event.response_type & 0x7F) == cursor_notify) look_changed_ = true;
}

bool X11Pointer::Track() {
    if (!available_) return false;
    xcb_connection_t* server = display_.get();
    const bool other_look = std::exchange(look_changed_, false);
    const auto place_asked = xcb_query_pointer(server, window_);
    if (other_look)
        look_ = display_.Await<xcb_xfixes_get_cursor_image_reply_t>(
            xcb_xfixes_get_cursor_image(server));
    const auto place = display_.Await<xcb_query_pointer_reply_t>(place_asked);
    PixelBox box;
    if (place && place->same_screen != 0 && look_)
        box = {place->win_x - look_->xhot, place->win_y - look_->yhot, look_->width, look_->height};
    return box != std::exchange(box_, box) || other_look;
}

void X11Pointer::Draw(std::uint8_t* pixels, int stride, const PixelLayout& layout,
                      const PixelBox& shown) const {
    const PixelBox seen = Intersection(box_, shown);
    if (seen.IsEmpty()) return;
    const std::uint32_t* look = xcb_xfixes_get_cursor_image_cursor_image(look_.get());
    for (std::int32_t y = seen.y; y < seen.Bottom(); ++y) {
        std::uint8_t* row = pixels + std::ptrdiff_t{y - shown.y} * stride +
                            std::ptrdiff_t{seen.x - shown.x} * layout.bytes;
        const std::uint32_t* from =
            look + std::ptrdiff_t{y - box_.y} * box_.width + (seen.x - box_.x);
        if (layout.bytes == 4)
            DrawRow<std::uint32_t>(row, from, seen.width, layout);
        else
            DrawRow<std::uint16_t>(row, from, seen.width, layout);
    }
}

}  // namespace engine
