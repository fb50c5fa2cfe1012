#include "engine/sources/screen/pipewire_library.h"

namespace engine {

PipeWireLibrary::PipeWireLibrary() : LoadedLibrary("libpipewire-0.3.so.0") {
    Load(init, "pw_init");
    Load(thread_loop_new, "pw_thread_loop_new");
    Load(thread_loop_destroy, "pw_thread_loop_destroy");
    Load(thread_loop_get_loop, "pw_thread_loop_get_loop");
    Load(thread_loop_start, "pw_thread_loop_start");
    Load(thread_loop_stop, "pw_thread_loop_stop");
    Load(thread_loop_lock, "pw_thread_loop_lock");
    Load(thread_loop_unlock, "pw_thread_loop_unlock");
    Load(context_new, "pw_context_new");
    Load(context_destroy, "pw_context_destroy");
    Load(context_connect_fd, "pw_context_connect_fd");
    Load(core_disconnect, "pw_core_disconnect");
    Load(properties_new_string, "pw_properties_new_string");
    Load(stream_new, "pw_stream_new");
    Load(stream_destroy, "pw_stream_destroy");
    Load(stream_add_listener, "pw_stream_add_listener");
    Load(stream_connect, "pw_stream_connect");
    Load(stream_update_params, "pw_stream_update_params");
    Load(stream_dequeue_buffer, "pw_stream_dequeue_buffer");
    Load(stream_queue_buffer, "pw_stream_queue_buffer");
    if (IsComplete()) init(nullptr, nullptr);
}

}  // namespace engine
