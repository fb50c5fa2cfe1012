#include "engine/sources/screen/x11_display.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <xcb/randr.h>
#include <xcb/xcbext.h>

#include <array>
#include <cstdint>
#include <string_view>

#include "platform/error.h"

namespace engine {
namespace {

std::string DisplayName() {
    const char* name = std::getenv("DISPLAY");
    return name == nullptr ? std::string() : name;
}

std::string AtomName(xcb_connection_t* server, xcb_atom_t atom) {
    const auto reply =
        Own(xcb_get_atom_name_reply(server, xcb_get_atom_name(server, atom), nullptr));
    if (!reply) return {};
    return {xcb_get_atom_name_name(reply.get()),
            static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
}

}  // namespace

X11Display::X11Display() {
    int number = 0;
    connection_.reset(xcb_connect(nullptr, &number));
    if (xcb_connection_has_error(get()) != 0)
        throw platform::Error(
            platform::kUnspecified,
            DisplayName().empty()
                ? std::string("There is no screen: no desktop runs here, or DISPLAY is not set")
                : fmt::format("The screen cannot be opened: no X server answers at \"{}\" "
                              "(DISPLAY), or it does not let this user in",
                              DisplayName()));
    xcb_screen_iterator_t screen = xcb_setup_roots_iterator(xcb_get_setup(get()));
    for (; screen.rem > 1 && number > 0; --number) xcb_screen_next(&screen);
    screen_ = screen.data;
    if (!wake_.IsOpen())
        throw platform::Error(platform::kUnspecified,
                              "The screen cannot be opened: too many files are open");
}

bool X11Display::Has(xcb_extension_t& extension) const {
    const xcb_query_extension_reply_t* reply = xcb_get_extension_data(get(), &extension);
    return reply != nullptr && reply->present != 0;
}

std::uint8_t X11Display::FirstEvent(xcb_extension_t& extension) const {
    return xcb_get_extension_data(get(), &extension)->first_event;
}

bool X11Display::IsLocal() const {
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    return getsockname(xcb_get_file_descriptor(get()), reinterpret_cast<sockaddr*>(&address),
                       &length) == 0 &&
           address.ss_family == AF_UNIX;
}

std::optional<PixelBox> X11Display::Geometry(xcb_window_t window) const {
    const auto reply = Await<xcb_get_geometry_reply_t>(xcb_get_geometry(get(), window));
    if (!reply) return std::nullopt;
    return PixelBox{reply->x, reply->y, reply->width, reply->height};
}

std::string X11Display::TextProperty(xcb_window_t window, xcb_atom_t name, xcb_atom_t type) const {
    constexpr std::uint32_t kMostWords = 1024;
    const auto reply = Own(xcb_get_property_reply(
        get(), xcb_get_property(get(), 0, window, name, type, 0, kMostWords), nullptr));
    if (!reply || reply->format != 8) return {};
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

xcb_atom_t X11Display::Atom(std::string_view name) const {
    const auto reply = Own(xcb_intern_atom_reply(
        get(), xcb_intern_atom(get(), 1, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

std::vector<std::uint32_t> X11Display::Numbers(xcb_window_t window, std::string_view name) const {
    constexpr std::uint32_t kMostNumbers = 64;
    const xcb_atom_t atom = Atom(name);
    if (atom == XCB_ATOM_NONE) return {};
    const auto reply = Own(xcb_get_property_reply(
        get(), xcb_get_property(get(), 0, window, atom, XCB_ATOM_ANY, 0, kMostNumbers), nullptr));
    if (!reply || reply->format != 32) return {};
    const auto* const first =
        static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    return {first, first + reply->value_len};
}

std::string X11Display::Title(xcb_window_t window) const {
    const xcb_atom_t name = Atom("_NET_WM_NAME");
    std::string title =
        name == XCB_ATOM_NONE ? std::string() : TextProperty(window, name, XCB_ATOM_ANY);
    return title.empty() ? TextProperty(window, XCB_ATOM_WM_NAME, XCB_ATOM_ANY) : title;
}

std::vector<Monitor> X11Display::Monitors() const {
    std::vector<Monitor> monitors;
    if (!Has(xcb_randr_id)) return monitors;
    const auto version =
        Own(xcb_randr_query_version_reply(get(), xcb_randr_query_version(get(), 1, 5), nullptr));
    // Monitors came with version 1.5; before, there is the whole screen only.
    if (!version || (version->major_version == 1 && version->minor_version < 5)) return monitors;
    constexpr std::uint8_t kActiveOnly = 1;
    const auto reply = Own(xcb_randr_get_monitors_reply(
        get(), xcb_randr_get_monitors(get(), root(), kActiveOnly), nullptr));
    if (!reply) return monitors;
    for (auto each = xcb_randr_get_monitors_monitors_iterator(reply.get()); each.rem > 0;
         xcb_randr_monitor_info_next(&each))
        monitors.push_back({AtomName(get(), each.data->name),
                            {each.data->x, each.data->y, each.data->width, each.data->height}});
    return monitors;
}

void X11Display::Wake() {
    woken_ = true;
    wake_.Write();
}

void X11Display::Wait(std::chrono::nanoseconds time, bool events) const {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    const timespec limit{seconds.count(), (time - seconds).count()};
    std::array<pollfd, 2> states{pollfd{wake_.Descriptor(), POLLIN, 0},
                                 pollfd{xcb_get_file_descriptor(get()), POLLIN, 0}};
    xcb_flush(get());
    ppoll(states.data(), events ? 2 : 1, &limit, nullptr);
}

void* X11Display::AwaitReply(unsigned sequence) const {
    xcb_flush(get());
    for (;;) {
        void* reply = nullptr;
        xcb_generic_error_t* error = nullptr;
        if (xcb_poll_for_reply(get(), sequence, &reply, &error) != 0) {
            const ReplyPtr<xcb_generic_error_t> refusal(error);
            CheckAlive();
            return reply;
        }
        std::array<pollfd, 2> states{pollfd{wake_.Descriptor(), POLLIN, 0},
                                     pollfd{xcb_get_file_descriptor(get()), POLLIN, 0}};
        poll(states.data(), states.size(), -1);
        if (states[0].revents != 0) return nullptr;
    }
}

ReplyPtr<xcb_generic_event_t> X11Display::NextEvent() const {
    auto event = Own(xcb_poll_for_event(get()));
    if (!event) CheckAlive();
    return event;
}

void X11Display::CheckAlive() const {
    if (xcb_connection_has_error(get()) == 0) return;
    throw platform::Error(platform::kUnspecified,
                          fmt::format("The X server at \"{}\" is gone", DisplayName()));
}

}  // namespace engine
