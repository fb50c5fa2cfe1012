#include "engine/sources/pulse_sources.h"

#include <dlfcn.h>
#include <pulse/pulseaudio.h>

#include <algorithm>
#include <memory>

namespace engine {
namespace {

using Clock = std::chrono::steady_clock;

// The client library brings a dozen others with it, which would cost each start of the program some
// milliseconds; it is loaded when devices are first asked for and stays loaded.
class Client {
  public:
    Client() : library_(dlopen("libpulse.so.0", RTLD_NOW | RTLD_LOCAL)) {
        if (library_ == nullptr) return;
        complete_ = true;
        Load(mainloop_new, "pa_mainloop_new");
        Load(mainloop_free, "pa_mainloop_free");
        Load(mainloop_get_api, "pa_mainloop_get_api");
        Load(mainloop_prepare, "pa_mainloop_prepare");
        Load(mainloop_poll, "pa_mainloop_poll");
        Load(mainloop_dispatch, "pa_mainloop_dispatch");
        Load(context_new, "pa_context_new");
        Load(context_connect, "pa_context_connect");
        Load(context_get_state, "pa_context_get_state");
        Load(context_disconnect, "pa_context_disconnect");
        Load(context_unref, "pa_context_unref");
        Load(context_get_server_info, "pa_context_get_server_info");
        Load(context_get_source_info_list, "pa_context_get_source_info_list");
        Load(operation_get_state, "pa_operation_get_state");
        Load(operation_cancel, "pa_operation_cancel");
        Load(operation_unref, "pa_operation_unref");
    }

    bool IsComplete() const { return complete_; }

    decltype(&pa_mainloop_new) mainloop_new = nullptr;
    decltype(&pa_mainloop_free) mainloop_free = nullptr;
    decltype(&pa_mainloop_get_api) mainloop_get_api = nullptr;
    decltype(&pa_mainloop_prepare) mainloop_prepare = nullptr;
    decltype(&pa_mainloop_poll) mainloop_poll = nullptr;
    decltype(&pa_mainloop_dispatch) mainloop_dispatch = nullptr;
    decltype(&pa_context_new) context_new = nullptr;
    decltype(&pa_context_connect) context_connect = nullptr;
    decltype(&pa_context_get_state) context_get_state = nullptr;
    decltype(&pa_context_disconnect) context_disconnect = nullptr;
    decltype(&pa_context_unref) context_unref = nullptr;
    decltype(&pa_context_get_server_info) context_get_server_info = nullptr;
    decltype(&pa_context_get_source_info_list) context_get_source_info_list = nullptr;
    decltype(&pa_operation_get_state) operation_get_state = nullptr;
    decltype(&pa_operation_cancel) operation_cancel = nullptr;
    decltype(&pa_operation_unref) operation_unref = nullptr;

  private:
    template <typename Function>
    void Load(Function& function, const char* name) {
        function = reinterpret_cast<Function>(dlsym(library_, name));
        complete_ = complete_ && function != nullptr;
    }

    void* library_;
    bool complete_ = false;
};

std::string Text(const char* text) { return text == nullptr ? std::string() : text; }

// One conversation with the server.
class Conversation {
  public:
    Conversation(const Client& client, Clock::time_point deadline)
        : client_(client),
          deadline_(deadline),
          loop_(client.mainloop_new(), client.mainloop_free),
          context_(nullptr, client.context_unref) {
        if (loop_)
            context_.reset(client.context_new(client.mainloop_get_api(loop_.get()), "Tessivo"));
    }
    ~Conversation() {
        if (context_) client_.context_disconnect(context_.get());
    }
    Conversation(const Conversation&) = delete;
    Conversation& operator=(const Conversation&) = delete;

    std::optional<PulseFacts> Ask() {
        if (!Connect()) return std::nullopt;
        PulseFacts facts;
        const bool answered =
            Wait(client_.context_get_server_info(context_.get(), TakeServer, &facts)) &&
            Wait(client_.context_get_source_info_list(context_.get(), TakeSource, &facts));
        if (!answered) return std::nullopt;
        return facts;
    }

  private:
    static void TakeServer(pa_context*, const pa_server_info* info, void* facts) {
        if (info == nullptr) return;
        auto& taken = *static_cast<PulseFacts*>(facts);
        taken.default_source = Text(info->default_source_name);
        taken.default_sink = Text(info->default_sink_name);
    }

    static void TakeSource(pa_context*, const pa_source_info* info, int end, void* facts) {
        if (end != 0 || info == nullptr) return;
        static_cast<PulseFacts*>(facts)->sources.push_back(
            {Text(info->name), Text(info->description), Text(info->monitor_of_sink_name)});
    }

    bool Connect() {
        if (!context_ ||
            client_.context_connect(context_.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
            return false;
        for (;;) {
            const pa_context_state_t state = client_.context_get_state(context_.get());
            if (state == PA_CONTEXT_READY) return true;
            if (!PA_CONTEXT_IS_GOOD(state) || !Turn()) return false;
        }
    }

    bool Wait(pa_operation* started) {
        if (started == nullptr) return false;
        const std::unique_ptr<pa_operation, decltype(client_.operation_unref)> operation(
            started, client_.operation_unref);
        while (client_.operation_get_state(started) == PA_OPERATION_RUNNING) {
            if (Turn()) continue;
            client_.operation_cancel(started);  // it must not write to facts that are gone
            return false;
        }
        return client_.operation_get_state(started) == PA_OPERATION_DONE;
    }

    // One round of the loop; false when the time is up or the loop is broken.
    bool Turn() {
        const auto rest =
            std::chrono::duration_cast<std::chrono::microseconds>(deadline_ - Clock::now()).count();
        if (rest <= 0) return false;
        return client_.mainloop_prepare(loop_.get(), static_cast<int>(rest)) >= 0 &&
               client_.mainloop_poll(loop_.get()) >= 0 &&
               client_.mainloop_dispatch(loop_.get()) >= 0;
    }

    const Client& client_;
    Clock::time_point deadline_;
    std::unique_ptr<pa_mainloop, decltype(&pa_mainloop_free)> loop_;
    std::unique_ptr<pa_context, decltype(&pa_context_unref)> context_;
};

}  // namespace

std::optional<PulseFacts> AskPulseServer(std::chrono::milliseconds patience) {
    const Clock::time_point deadline = Clock::now() + patience;
    const Client client;
    if (!client.IsComplete()) return std::nullopt;
    return Conversation(client, deadline).Ask();
}

}  // namespace engine
