// The conversation with the desktop's portal that hands out a screen
// (org.freedesktop.portal.ScreenCast).
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "engine/sources/screen/bus_connection.h"
#include "platform/error.h"

namespace engine {

/// One thread at a time.
class PortalSession {
  public:
    /// What the wake-up ends is given up: `wake_up` outlives this.
    explicit PortalSession(const platform::EventFd& wake_up);
    /// Takes the screen back; a question that is still open disappears.
    ~PortalSession();
    PortalSession(const PortalSession&) = delete;
    PortalSession& operator=(const PortalSession&) = delete;

    struct SharedScreen {
        int pipewire = -1;  // a connection, which belongs to the caller
        std::uint32_t node = 0;
    };
    /// Waits until the person has chosen a screen. Once. The mouse pointer is drawn in only when
    /// asked for, and where the desktop can do that.
    /// Throws platform::Error when there is no portal, it hands no screen out, or woken.
    SharedScreen Ask(bool with_pointer);

    /// What becomes readable when the portal says something.
    int Descriptor() const { return bus_->Descriptor(); }
    /// Handles what it has said; false when the screen is shared no more.
    bool IsShared();

  private:
    using Clock = BusConnection::Clock;
    using Append = std::function<void(sd_bus_message*, const std::string& token)>;

    std::uint32_t CursorMode(bool with_pointer);
    std::uint32_t ScreenKinds();
    std::uint32_t Property(const char* name);
    BusMessage Request(const char* method, const Append& append,
                       std::optional<Clock::time_point> deadline);
    int OpenPipeWire();
    std::uint32_t NodeOf(const BusMessage& response) const;
    bool EnterEntry(sd_bus_message* message, const std::string& key) const;
    void CheckReply(const BusReply& reply) const;
    platform::Error Interrupted(bool woken) const;
    Clock::time_point Soon() const;

    const BusLibrary library_;
    const platform::EventFd& wake_up_;
    std::optional<BusConnection> bus_;
    std::string session_;  // its path
    std::string request_;  // the path of the one that is open
    int requests_ = 0;
    bool closed_ = false;
};

}  // namespace engine
