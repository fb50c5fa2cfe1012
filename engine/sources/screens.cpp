#include "engine/sources/screens.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <xcb/randr.h>
#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace engine {
namespace {

template <typename Reply>
struct FreeReply {
    void operator()(Reply* reply) const { std::free(reply); }
};
template <typename Reply>
using ReplyPtr = std::unique_ptr<Reply, FreeReply<Reply>>;

template <typename Reply>
ReplyPtr<Reply> Own(Reply* reply) {
    return ReplyPtr<Reply>(reply);
}

std::string Variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : value;
}

// A variable may outlive its desktop, so the socket is what counts.
bool WaylandAnswers() {
    const std::string display = Variable("WAYLAND_DISPLAY");
    if (display.empty()) return false;
    const std::string path =
        display.front() == '/' ? display : Variable("XDG_RUNTIME_DIR") + "/" + display;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) return false;
    std::memcpy(address.sun_path, path.c_str(), path.size());
    const int connection = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (connection < 0) return false;
    const bool answers =
        connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    close(connection);
    return answers;
}

// Monitors came with version 1.5; before, there is the whole screen only.
bool KnowsMonitors(xcb_connection_t* server) {
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(server, &xcb_randr_id);
    if (extension == nullptr || extension->present == 0) return false;
    const auto version =
        Own(xcb_randr_query_version_reply(server, xcb_randr_query_version(server, 1, 5), nullptr));
    return version && (version->major_version > 1 || version->minor_version >= 5);
}

std::string AtomName(xcb_connection_t* server, xcb_atom_t atom) {
    const auto reply =
        Own(xcb_get_atom_name_reply(server, xcb_get_atom_name(server, atom), nullptr));
    if (!reply) return {};
    return {xcb_get_atom_name_name(reply.get()),
            static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
}

std::vector<std::string> Monitors(xcb_connection_t* server, xcb_window_t root) {
    std::vector<std::string> names;
    if (!KnowsMonitors(server)) return names;
    constexpr std::uint8_t kActiveOnly = 1;
    const auto reply = Own(xcb_randr_get_monitors_reply(
        server, xcb_randr_get_monitors(server, root, kActiveOnly), nullptr));
    if (!reply) return names;
    for (auto each = xcb_randr_get_monitors_monitors_iterator(reply.get()); each.rem > 0;
         xcb_randr_monitor_info_next(&each))
        names.push_back(AtomName(server, each.data->name));
    return names;
}

}  // namespace

ScreenFacts Screens() {
    if (WaylandAnswers()) return {ScreenAccess::Portal, {}};
    int number = 0;
    const std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t*)> server(
        xcb_connect(nullptr, &number), xcb_disconnect);
    if (xcb_connection_has_error(server.get()) != 0) return {};
    xcb_screen_iterator_t screen = xcb_setup_roots_iterator(xcb_get_setup(server.get()));
    for (; screen.rem > 1 && number > 0; --number) xcb_screen_next(&screen);
    return {ScreenAccess::X11, Monitors(server.get(), screen.data->root)};
}

}  // namespace engine
