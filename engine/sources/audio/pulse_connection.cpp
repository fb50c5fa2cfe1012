#include "engine/sources/audio/pulse_connection.h"

namespace engine {

PulseLibrary::PulseLibrary() : LoadedLibrary("libpulse.so.0") {
    Load(mainloop_new, "pa_mainloop_new");
    Load(mainloop_free, "pa_mainloop_free");
    Load(mainloop_get_api, "pa_mainloop_get_api");
    Load(mainloop_prepare, "pa_mainloop_prepare");
    Load(mainloop_poll, "pa_mainloop_poll");
    Load(mainloop_dispatch, "pa_mainloop_dispatch");
    Load(mainloop_wakeup, "pa_mainloop_wakeup");
    Load(context_new, "pa_context_new");
    Load(context_connect, "pa_context_connect");
    Load(context_get_state, "pa_context_get_state");
    Load(context_errno, "pa_context_errno");
    Load(context_disconnect, "pa_context_disconnect");
    Load(context_unref, "pa_context_unref");
    Load(context_get_server_info, "pa_context_get_server_info");
    Load(context_get_source_info_list, "pa_context_get_source_info_list");
    Load(context_get_source_info_by_name, "pa_context_get_source_info_by_name");
    Load(operation_get_state, "pa_operation_get_state");
    Load(operation_cancel, "pa_operation_cancel");
    Load(operation_unref, "pa_operation_unref");
    Load(stream_new, "pa_stream_new");
    Load(stream_unref, "pa_stream_unref");
    Load(stream_connect_record, "pa_stream_connect_record");
    Load(stream_get_state, "pa_stream_get_state");
    Load(stream_is_suspended, "pa_stream_is_suspended");
    Load(stream_peek, "pa_stream_peek");
    Load(stream_drop, "pa_stream_drop");
    Load(stream_update_timing_info, "pa_stream_update_timing_info");
    Load(stream_get_timing_info, "pa_stream_get_timing_info");
    Load(strerror, "pa_strerror");
}

PulseConnection::PulseConnection(const PulseLibrary& library)
    : library_(library),
      loop_(library.mainloop_new(), library.mainloop_free),
      context_(nullptr, library.context_unref) {
    if (loop_)
        context_.reset(library.context_new(library.mainloop_get_api(loop_.get()), "Tessivo"));
}

PulseConnection::~PulseConnection() {
    if (context_) library_.context_disconnect(context_.get());
}

bool PulseConnection::Connect(Clock::time_point deadline) {
    if (!context_ ||
        library_.context_connect(context_.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
        return false;
    while (library_.context_get_state(context_.get()) != PA_CONTEXT_READY)
        if (!IsUp() || !TurnUntil(deadline)) return false;
    return true;
}

bool PulseConnection::Wait(pa_operation* started, Clock::time_point deadline) {
    if (started == nullptr) return false;
    const std::unique_ptr<pa_operation, decltype(library_.operation_unref)> operation(
        started, library_.operation_unref);
    while (library_.operation_get_state(started) == PA_OPERATION_RUNNING) {
        if (TurnUntil(deadline)) continue;
        library_.operation_cancel(started);  // it must not write to what its caller gives up
        return false;
    }
    return library_.operation_get_state(started) == PA_OPERATION_DONE;
}

bool PulseConnection::Turn(std::chrono::microseconds patience) {
    const int timeout = patience.count() < 0 ? -1 : static_cast<int>(patience.count());
    // Preparing clears a wake-up that came just before, so the flag is looked at after it.
    return !woken_ && library_.mainloop_prepare(loop_.get(), timeout) >= 0 && !woken_ &&
           library_.mainloop_poll(loop_.get()) >= 0 && library_.mainloop_dispatch(loop_.get()) >= 0;
}

bool PulseConnection::TurnUntil(Clock::time_point deadline) {
    const auto rest =
        std::chrono::duration_cast<std::chrono::microseconds>(deadline - Clock::now());
    return rest.count() > 0 && Turn(rest);
}

void PulseConnection::Wake() {
    woken_ = true;
    library_.mainloop_wakeup(loop_.get());
}

bool PulseConnection::IsUp() const {
    return PA_CONTEXT_IS_GOOD(library_.context_get_state(context_.get()));
}

std::string PulseConnection::LastError() const {
    return context_ ? library_.strerror(library_.context_errno(context_.get())) : "out of memory";
}

}  // namespace engine
