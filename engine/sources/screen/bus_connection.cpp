#include "engine/sources/screen/bus_connection.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace engine {
namespace {

// Also how long a service may take that is started by the call.
constexpr std::uint64_t kCallMicroseconds = 25'000'000;
constexpr std::chrono::seconds kOpeningPatience{5};

}  // namespace

BusLibrary::BusLibrary() : LoadedLibrary("libsystemd.so.0") {
    Load(open_user, "sd_bus_open_user");
    Load(flush_close_unref, "sd_bus_flush_close_unref");
    Load(set_method_call_timeout, "sd_bus_set_method_call_timeout");
    Load(is_ready, "sd_bus_is_ready");
    Load(get_unique_name, "sd_bus_get_unique_name");
    Load(get_fd, "sd_bus_get_fd");
    Load(get_events, "sd_bus_get_events");
    Load(get_timeout, "sd_bus_get_timeout");
    Load(process, "sd_bus_process");
    Load(call_async, "sd_bus_call_async");
    Load(send, "sd_bus_send");
    Load(match_signal_async, "sd_bus_match_signal_async");
    Load(slot_unref, "sd_bus_slot_unref");
    Load(message_new_method_call, "sd_bus_message_new_method_call");
    Load(message_ref, "sd_bus_message_ref");
    Load(message_unref, "sd_bus_message_unref");
    Load(message_get_error, "sd_bus_message_get_error");
    Load(message_append, "sd_bus_message_append");
    Load(message_read, "sd_bus_message_read");
    Load(message_skip, "sd_bus_message_skip");
    Load(message_enter_container, "sd_bus_message_enter_container");
    Load(message_exit_container, "sd_bus_message_exit_container");
}

BusConnection::BusConnection(const BusLibrary& library, const platform::EventFd& wake_up)
    : library_(library), wake_up_(wake_up), bus_(nullptr, library.flush_close_unref) {
    sd_bus* bus = nullptr;
    if (library_.open_user(&bus) < 0) return;
    bus_.reset(bus);
    library_.set_method_call_timeout(bus, kCallMicroseconds);
    if (!WaitUntil([&] { return library_.is_ready(bus) > 0; }, Clock::now() + kOpeningPatience))
        bus_.reset();
}

std::string BusConnection::UniqueName() const {
    const char* name = nullptr;
    return library_.get_unique_name(bus_.get(), &name) < 0 ? std::string() : std::string(name);
}

BusMessage BusConnection::NewCall(const char* peer, const std::string& path, const char* interface,
                                  const char* method) const {
    sd_bus_message* message = nullptr;
    library_.message_new_method_call(bus_.get(), &message, peer, path.c_str(), interface, method);
    return {message, library_.message_unref};
}

BusReply BusConnection::Call(const BusMessage& message, Clock::time_point deadline) {
    struct Answer {
        const BusLibrary& library;
        BusReply reply;
    };
    Answer answer{library_, {{nullptr, library_.message_unref}, {}, {}}};
    const auto take = [](sd_bus_message* came, void* data, sd_bus_error*) {
        auto& taken = *static_cast<Answer*>(data);
        taken.reply.message.reset(taken.library.message_ref(came));
        if (const sd_bus_error* error = taken.library.message_get_error(came)) {
            taken.reply.error = error->name == nullptr ? "" : error->name;
            taken.reply.text = error->message == nullptr ? "" : error->message;
        }
        return 0;
    };
    sd_bus_slot* slot = nullptr;
    if (library_.call_async(bus_.get(), &slot, message.get(), take, &answer, 0) < 0)
        return std::move(answer.reply);
    const Slot pending(slot, library_.slot_unref);
    WaitUntil([&] { return answer.reply.message != nullptr; }, deadline);
    return std::move(answer.reply);
}

void BusConnection::Send(const BusMessage& message) const {
    library_.send(bus_.get(), message.get(), nullptr);
}

void BusConnection::Listen(const char* peer, const std::string& path, const char* interface,
                           const char* member, std::function<void(sd_bus_message*)> handler) {
    Listener& listener =
        listeners_.emplace_back(Listener{std::move(handler), {nullptr, library_.slot_unref}});
    const auto hear = [](sd_bus_message* came, void* data, sd_bus_error*) {
        static_cast<Listener*>(data)->handler(came);
        return 0;
    };
    sd_bus_slot* slot = nullptr;
    library_.match_signal_async(bus_.get(), &slot, peer, path.c_str(), interface, member, hear,
                                nullptr, &listener);
    listener.slot.reset(slot);
}

bool BusConnection::HandleAll() {
    for (;;) {
        const int handled = library_.process(bus_.get(), nullptr);
        if (handled <= 0) return handled == 0;
    }
}

bool BusConnection::WaitUntil(const std::function<bool()>& happened,
                              std::optional<Clock::time_point> deadline) {
    for (;;) {
        if (!HandleAll()) return happened();
        if (happened()) return true;
        if (!WaitForMore(deadline)) return false;
    }
}

bool BusConnection::WaitForMore(std::optional<Clock::time_point> deadline) const {
    std::optional<Clock::time_point> due = deadline;
    std::uint64_t microseconds = 0;  // when the bus itself has something to do
    if (library_.get_timeout(bus_.get(), &microseconds) >= 0 && microseconds <= INT64_MAX) {
        const Clock::time_point own(
            std::chrono::microseconds(static_cast<std::int64_t>(microseconds)));
        due = std::min(own, deadline.value_or(own));
    }
    int timeout = -1;
    if (due) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(*due - Clock::now()).count();
        timeout = static_cast<int>(std::clamp<std::int64_t>(left, 0, kCallMicroseconds / 1000));
    }
    const int events = library_.get_events(bus_.get());
    if (events < 0) return false;
    std::array<pollfd, 2> waited{pollfd{Descriptor(), static_cast<short>(events), 0},
                                 pollfd{wake_up_.Descriptor(), POLLIN, 0}};
    poll(waited.data(), waited.size(), timeout);
    return waited[1].revents == 0 && (!deadline || Clock::now() < *deadline);
}

}  // namespace engine
