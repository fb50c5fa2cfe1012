// A connection to the session's message bus (D-Bus).
#pragma once

#include <systemd/sd-bus.h>

#include <chrono>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>

#include "engine/base/system/loaded_library.h"
#include "platform/posix/event_fd.h"

namespace engine {

/// The functions of the client library, under their names without "sd_bus_".
class BusLibrary : public LoadedLibrary {
  public:
    BusLibrary();

    decltype(&sd_bus_open_user) open_user = nullptr;
    decltype(&sd_bus_flush_close_unref) flush_close_unref = nullptr;
    decltype(&sd_bus_set_method_call_timeout) set_method_call_timeout = nullptr;
    decltype(&sd_bus_is_ready) is_ready = nullptr;
    decltype(&sd_bus_get_unique_name) get_unique_name = nullptr;
    decltype(&sd_bus_get_fd) get_fd = nullptr;
    decltype(&sd_bus_get_events) get_events = nullptr;
    decltype(&sd_bus_get_timeout) get_timeout = nullptr;
    decltype(&sd_bus_process) process = nullptr;
    decltype(&sd_bus_call_async) call_async = nullptr;
    decltype(&sd_bus_send) send = nullptr;
    decltype(&sd_bus_match_signal_async) match_signal_async = nullptr;
    decltype(&sd_bus_slot_unref) slot_unref = nullptr;
    decltype(&sd_bus_message_new_method_call) message_new_method_call = nullptr;
    decltype(&sd_bus_message_ref) message_ref = nullptr;
    decltype(&sd_bus_message_unref) message_unref = nullptr;
    decltype(&sd_bus_message_get_error) message_get_error = nullptr;
    decltype(&sd_bus_message_append) message_append = nullptr;
    decltype(&sd_bus_message_read) message_read = nullptr;
    decltype(&sd_bus_message_skip) message_skip = nullptr;
    decltype(&sd_bus_message_enter_container) message_enter_container = nullptr;
    decltype(&sd_bus_message_exit_container) message_exit_container = nullptr;
};

using BusMessage = std::unique_ptr<sd_bus_message, decltype(&sd_bus_message_unref)>;

/// What came of a call.
struct BusReply {
    BusMessage message;  // null when nothing came: woken, too late, or the bus is gone
    std::string error;   // its name; "" = none
    std::string text;    // of the error, for people
};

/// One thread at a time.
class BusConnection {
  public:
    using Clock = std::chrono::steady_clock;

    /// `library` is complete and outlives this, as does `wake_up`, which ends every wait. Waits
    /// some seconds for a bus that does not answer.
    BusConnection(const BusLibrary& library, const platform::EventFd& wake_up);

    /// Whether there is a bus; then alone may anything else be called.
    bool IsOpen() const { return bus_ != nullptr; }
    std::string UniqueName() const;

    BusMessage NewCall(const char* peer, const std::string& path, const char* interface,
                       const char* method) const;
    BusReply Call(const BusMessage& message, Clock::time_point deadline);
    /// Asks for no reply and does not wait.
    void Send(const BusMessage& message) const;

    /// The handler is called while this waits or handles what has come.
    void Listen(const char* peer, const std::string& path, const char* interface,
                const char* member, std::function<void(sd_bus_message*)> handler);

    /// Waits for what a handler does; without a deadline for ever. False when it does not happen:
    /// woken, too late, or the bus is gone.
    bool WaitUntil(const std::function<bool()>& happened,
                   std::optional<Clock::time_point> deadline);

    /// What becomes readable when something comes.
    int Descriptor() const { return library_.get_fd(bus_.get()); }
    /// Handles what has come; false when the bus is gone.
    bool HandleAll();

  private:
    bool WaitForMore(std::optional<Clock::time_point> deadline) const;

    using Slot = std::unique_ptr<sd_bus_slot, decltype(&sd_bus_slot_unref)>;
    struct Listener {
        std::function<void(sd_bus_message*)> handler;
        Slot slot;
    };

    const BusLibrary& library_;
    const platform::EventFd& wake_up_;
    std::unique_ptr<sd_bus, decltype(&sd_bus_flush_close_unref)> bus_;
    std::list<Listener> listeners_;  // each stays where it is
};

}  // namespace engine
