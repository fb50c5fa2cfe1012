#include "engine/sources/screen/screens.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include "engine/sources/screen/x11_display.h"
#include "platform/error.h"
#include "platform/posix/file_descriptor.h"

namespace engine {
namespace {

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
    const platform::FileDescriptor connection(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    return connection.IsOpen() &&
           connect(connection.Number(), reinterpret_cast<const sockaddr*>(&address),
                   sizeof address) == 0;
}

}  // namespace

ScreenFacts Screens() {
    if (WaylandAnswers()) return {ScreenAccess::Portal, {}};
    try {
        ScreenFacts facts{ScreenAccess::X11, {}};
        for (Monitor& each : X11Display().Monitors())
            facts.monitors.push_back(std::move(each.name));
        return facts;
    } catch (const platform::Error&) {
        return {};
    }
}

}  // namespace engine
