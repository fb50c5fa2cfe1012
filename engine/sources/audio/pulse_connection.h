// A connection to the PulseAudio server, or to PipeWire's in its place.
//
// The client library brings a dozen others with it, which would cost each start of the program some
// milliseconds, and not every machine has it; it is loaded at the first connection.
#pragma once

#include <pulse/pulseaudio.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>

#include "engine/base/system/loaded_library.h"

namespace engine {

/// The functions of the client library, under their names without "pa_".
class PulseLibrary : public LoadedLibrary {
  public:
    PulseLibrary();

    decltype(&pa_mainloop_new) mainloop_new = nullptr;
    decltype(&pa_mainloop_free) mainloop_free = nullptr;
    decltype(&pa_mainloop_get_api) mainloop_get_api = nullptr;
    decltype(&pa_mainloop_prepare) mainloop_prepare = nullptr;
    decltype(&pa_mainloop_poll) mainloop_poll = nullptr;
    decltype(&pa_mainloop_dispatch) mainloop_dispatch = nullptr;
    decltype(&pa_mainloop_wakeup) mainloop_wakeup = nullptr;
    decltype(&pa_context_new) context_new = nullptr;
    decltype(&pa_context_connect) context_connect = nullptr;
    decltype(&pa_context_get_state) context_get_state = nullptr;
    decltype(&pa_context_errno) context_errno = nullptr;
    decltype(&pa_context_disconnect) context_disconnect = nullptr;
    decltype(&pa_context_unref) context_unref = nullptr;
    decltype(&pa_context_get_server_info) context_get_server_info = nullptr;
    decltype(&pa_context_get_source_info_list) context_get_source_info_list = nullptr;
    decltype(&pa_context_get_source_info_by_name) context_get_source_info_by_name = nullptr;
    decltype(&pa_operation_get_state) operation_get_state = nullptr;
    decltype(&pa_operation_cancel) operation_cancel = nullptr;
    decltype(&pa_operation_unref) operation_unref = nullptr;
    decltype(&pa_stream_new) stream_new = nullptr;
    decltype(&pa_stream_unref) stream_unref = nullptr;
    decltype(&pa_stream_connect_record) stream_connect_record = nullptr;
    decltype(&pa_stream_get_state) stream_get_state = nullptr;
    decltype(&pa_stream_is_suspended) stream_is_suspended = nullptr;
    decltype(&pa_stream_peek) stream_peek = nullptr;
    decltype(&pa_stream_drop) stream_drop = nullptr;
    decltype(&pa_stream_update_timing_info) stream_update_timing_info = nullptr;
    decltype(&pa_stream_get_timing_info) stream_get_timing_info = nullptr;
    decltype(&pa_strerror) strerror = nullptr;
};

/// Wake comes from any thread, the rest from one at a time.
class PulseConnection {
  public:
    using Clock = std::chrono::steady_clock;

    /// `library` is complete and outlives this.
    explicit PulseConnection(const PulseLibrary& library);
    ~PulseConnection();
    PulseConnection(const PulseConnection&) = delete;
    PulseConnection& operator=(const PulseConnection&) = delete;

    /// Starts no server. False when none can be reached or it does not answer in time.
    bool Connect(Clock::time_point deadline);

    /// Takes what was started and waits for its end; false when it failed, the connection broke or
    /// the time is up. Its callback is not called afterwards.
    bool Wait(pa_operation* started, Clock::time_point deadline);

    /// One round of the loop, which waits for events up to `patience`, for ever when negative.
    /// False once woken, or when the loop is broken.
    bool Turn(std::chrono::microseconds patience);

    /// A round that waits until the deadline at most. False also when that has passed.
    bool TurnUntil(Clock::time_point deadline);

    /// Ends a Turn that waits, and every later one.
    void Wake();

    bool IsUp() const;
    /// What the server said to the last failure.
    std::string LastError() const;
    pa_context* Context() const { return context_.get(); }

  private:
    const PulseLibrary& library_;
    std::unique_ptr<pa_mainloop, decltype(&pa_mainloop_free)> loop_;
    std::unique_ptr<pa_context, decltype(&pa_context_unref)> context_;
    std::atomic<bool> woken_{false};
};

}  // namespace engine
