#include "engine/sources/screen/portal_session.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>

#include <algorithm>
#include <utility>

namespace engine {
namespace {

constexpr const char* kPortal = "org.freedesktop.portal.Desktop";
constexpr const char* kPortalPath = "/org/freedesktop/portal/desktop";
constexpr const char* kScreenCast = "org.freedesktop.portal.ScreenCast";
constexpr const char* kRequest = "org.freedesktop.portal.Request";
constexpr const char* kSession = "org.freedesktop.portal.Session";
constexpr const char* kProperties = "org.freedesktop.DBus.Properties";
constexpr const char* kBus = "org.freedesktop.DBus";
constexpr const char* kBusPath = "/org/freedesktop/DBus";

constexpr std::uint32_t kMonitors = 1;
constexpr std::uint32_t kWindows = 2;
constexpr std::uint32_t kPointerHidden = 1;
constexpr std::uint32_t kPointerEmbedded = 2;
constexpr std::uint32_t kGranted = 0;
constexpr std::uint32_t kDeclined = 1;

// A portal may have to be started first, and its desktop's part after it.
constexpr std::chrono::seconds kPatience{30};

constexpr const char* kBackends =
    "install pipewire, wireplumber, xdg-desktop-portal and the part of it for the desktop "
    "(xdg-desktop-portal-gnome, -kde or -wlr), and log in again";

platform::Error CannotShare(const std::string& reason) {
    return {platform::kUnspecified,
            fmt::format("The screen of this Wayland session cannot be recorded: {}.", reason)};
}

}  // namespace

PortalSession::PortalSession(const platform::EventFd& wake_up) : wake_up_(wake_up) {
    if (!library_.IsComplete())
        throw CannotShare("libsystemd.so.0 is missing, install libsystemd0");
    bus_.emplace(library_, wake_up);
    if (!bus_->IsOpen())
        throw CannotShare(
            "the session's message bus cannot be reached, set DBUS_SESSION_BUS_ADDRESS to its "
            "address or log in to a desktop session");
}

PortalSession::~PortalSession() {
    if (!bus_ || !bus_->IsOpen()) return;
    if (!request_.empty()) bus_->Send(bus_->NewCall(kPortal, request_, kRequest, "Close"));
    if (!session_.empty()) bus_->Send(bus_->NewCall(kPortal, session_, kSession, "Close"));
}

PortalSession::Clock::time_point PortalSession::Soon() const { return Clock::now() + kPatience; }

platform::Error PortalSession::Interrupted(bool woken) const {
    if (woken)
        return {platform::kUnspecified,
                "The screen was not shared: the recording was stopped before that"};
    return CannotShare(
        "the desktop's portal does not answer, log in again or look at what xdg-desktop-portal "
        "reports");
}

void PortalSession::CheckReply(const BusReply& reply) const {
    if (reply.message == nullptr) {
        pollfd woken{wake_up_.Descriptor(), POLLIN, 0};
        throw Interrupted(poll(&woken, 1, 0) > 0);
    }
    if (reply.error.empty()) return;
    constexpr const char* kAbsent[] = {"org.freedesktop.DBus.Error.ServiceUnknown",
                                       "org.freedesktop.DBus.Error.NameHasNoOwner"};
    constexpr const char* kWithoutScreens[] = {
        "org.freedesktop.DBus.Error.UnknownInterface", "org.freedesktop.DBus.Error.UnknownMethod",
        "org.freedesktop.DBus.Error.UnknownProperty", "org.freedesktop.DBus.Error.InvalidArgs"};
    const auto is_one = [&](const auto& names) {
        return std::find(std::begin(names), std::end(names), reply.error) != std::end(names);
    };
    if (is_one(kAbsent)) throw CannotShare(fmt::format("the desktop has no portal, {}", kBackends));
    if (is_one(kWithoutScreens))
        throw CannotShare(fmt::format("the desktop's portal hands no screens out, {} ({})",
                                      kBackends, reply.text));
    throw CannotShare(fmt::format("the desktop's portal says \"{}\" ({}), {}", reply.text,
                                  reply.error, kBackends));
}

std::uint32_t PortalSession::Property(const char* name) {
    const BusMessage call = bus_->NewCall(kPortal, kPortalPath, kProperties, "Get");
    library_.message_append(call.get(), "ss", kScreenCast, name);
    const BusReply reply = bus_->Call(call, Soon());
    CheckReply(reply);
    std::uint32_t value = 0;
    library_.message_read(reply.message.get(), "v", "u", &value);
    return value;
}

std::uint32_t PortalSession::ScreenKinds() {
    const std::uint32_t kinds = Property("AvailableSourceTypes") & (kMonitors | kWindows);
    if (kinds == 0)
        throw CannotShare(fmt::format("the desktop's portal hands no screens out, {}", kBackends));
    return kinds;
}

std::uint32_t PortalSession::CursorMode(bool with_pointer) {
    return with_pointer && (Property("AvailableCursorModes") & kPointerEmbedded) != 0
               ? kPointerEmbedded
               : kPointerHidden;
}

// The portal answers by a signal of an object whose path follows from the caller's name and the
// token, so that it can be listened to before there is anything to miss.
BusMessage PortalSession::Request(const char* method, const Append& append,
                                  std::optional<Clock::time_point> deadline) {
    const std::string token = fmt::format("tessivo{}", ++requests_);
    std::string sender = bus_->UniqueName().substr(1);
    std::replace(sender.begin(), sender.end(), '.', '_');
    request_ = fmt::format("{}/request/{}/{}", kPortalPath, sender, token);
    // What a handler refers to may outlast this call.
    const auto response = std::make_shared<BusMessage>(BusMessage{nullptr, library_.message_unref});
    bus_->Listen(kPortal, request_, kRequest, "Response", [this, response](sd_bus_message* came) {
        response->reset(library_.message_ref(came));
    });
    const BusMessage call = bus_->NewCall(kPortal, kPortalPath, kScreenCast, method);
    append(call.get(), token);
    CheckReply(bus_->Call(call, Soon()));
    const bool answered =
        bus_->WaitUntil([&] { return *response != nullptr || closed_; }, deadline);
    if (*response == nullptr) {
        if (closed_ || answered) throw CannotShare("the desktop's portal has ended, log in again");
        CheckReply({{nullptr, library_.message_unref}, {}, {}});
    }
    request_.clear();
    std::uint32_t code = kGranted;
    library_.message_read(response->get(), "u", &code);
    if (code == kDeclined)
        throw platform::Error(
            platform::kAccessDenied,
            "The screen was not shared: the desktop's question was declined. Run the command again "
            "and choose a screen");
    if (code != kGranted)
        throw CannotShare(
            "the desktop's portal failed to hand the screen out, look at what "
            "xdg-desktop-portal and its part for the desktop report");
    return std::move(*response);
}

// Goes to the value with the key in a dictionary of strings and variants.
bool PortalSession::EnterEntry(sd_bus_message* message, const std::string& key) const {
    if (library_.message_enter_container(message, 'a', "{sv}") <= 0) return false;
    while (library_.message_enter_container(message, 'e', "sv") > 0) {
        const char* name = nullptr;
        if (library_.message_read(message, "s", &name) <= 0) return false;
        if (key == name) return true;
        library_.message_skip(message, "v");
        library_.message_exit_container(message);
    }
    return false;
}

std::uint32_t PortalSession::NodeOf(const BusMessage& response) const {
    std::uint32_t node = 0;
    if (!EnterEntry(response.get(), "streams") ||
        library_.message_enter_container(response.get(), 'v', "a(ua{sv})") <= 0 ||
        library_.message_enter_container(response.get(), 'a', "(ua{sv})") <= 0 ||
        library_.message_enter_container(response.get(), 'r', "ua{sv}") <= 0 ||
        library_.message_read(response.get(), "u", &node) <= 0)
        throw CannotShare("the desktop's portal has handed nothing out, run the command again");
    return node;
}

int PortalSession::OpenPipeWire() {
    const BusMessage call = bus_->NewCall(kPortal, kPortalPath, kScreenCast, "OpenPipeWireRemote");
    library_.message_append(call.get(), "oa{sv}", session_.c_str(), 0);
    const BusReply reply = bus_->Call(call, Soon());
    CheckReply(reply);
    int descriptor = -1;
    library_.message_read(reply.message.get(), "h", &descriptor);
    const int own = fcntl(descriptor, F_DUPFD_CLOEXEC, 0);  // the message's is closed with it
    if (own < 0)
        throw CannotShare(
            "PipeWire cannot be reached, install pipewire and wireplumber and log in again");
    return own;
}

PortalSession::SharedScreen PortalSession::Ask(bool with_pointer) {
    const std::uint32_t kinds = ScreenKinds();
    const std::uint32_t cursor_mode = CursorMode(with_pointer);
    bus_->Listen(kBus, kBusPath, kBus, "NameOwnerChanged", [this](sd_bus_message* came) {
        const char *name = nullptr, *old_owner = nullptr, *owner = nullptr;
        if (library_.message_read(came, "sss", &name, &old_owner, &owner) > 0 &&
            std::string(name) == kPortal && *old_owner != '\0')
            closed_ = true;
    });

    const BusMessage created = Request(
        "CreateSession",
        [&](sd_bus_message* call, const std::string& token) {
            library_.message_append(call, "a{sv}", 2, "handle_token", "s", token.c_str(),
                                    "session_handle_token", "s", token.c_str());
        },
        Soon());
    const char* session = nullptr;
    if (!EnterEntry(created.get(), "session_handle") ||
        library_.message_read(created.get(), "v", "s", &session) <= 0)
        throw CannotShare("the desktop's portal has opened no session, log in again");
    session_ = session;
    bus_->Listen(kPortal, session_, kSession, "Closed",
                 [this](sd_bus_message*) { closed_ = true; });

    Request(
        "SelectSources",
        [&](sd_bus_message* call, const std::string& token) {
            library_.message_append(call, "oa{sv}", session_.c_str(), 4, "handle_token", "s",
                                    token.c_str(), "types", "u", kinds, "multiple", "b", 0,
                                    "cursor_mode", "u", cursor_mode);
        },
        Soon());
    const BusMessage started = Request(
        "Start",
        [&](sd_bus_message* call, const std::string& token) {
            library_.message_append(call, "osa{sv}", session_.c_str(), "", 1, "handle_token", "s",
                                    token.c_str());
        },
        std::nullopt);
    const std::uint32_t node = NodeOf(started);
    return {OpenPipeWire(), node};
}

bool PortalSession::IsShared() { return bus_->HandleAll() && !closed_; }

}  // namespace engine
