#include "engine/sources/audio/pulse_sources.h"

#include "engine/sources/audio/pulse_connection.h"

namespace engine {
namespace {

std::string Text(const char* text) { return text == nullptr ? std::string() : text; }

void TakeServer(pa_context*, const pa_server_info* info, void* facts) {
    if (info == nullptr) return;
    auto& taken = *static_cast<PulseFacts*>(facts);
    taken.default_source = Text(info->default_source_name);
    taken.default_sink = Text(info->default_sink_name);
}

void TakeSource(pa_context*, const pa_source_info* info, int end, void* facts) {
    if (end != 0 || info == nullptr) return;
    static_cast<PulseFacts*>(facts)->sources.push_back(
        {Text(info->name), Text(info->description), Text(info->monitor_of_sink_name)});
}

}  // namespace

std::optional<PulseFacts> AskPulseServer(std::chrono::milliseconds patience) {
    const auto deadline = PulseConnection::Clock::now() + patience;
    const PulseLibrary library;
    if (!library.IsComplete()) return std::nullopt;
    PulseConnection connection(library);
    PulseFacts facts;
    const bool answered =
        connection.Connect(deadline) &&
        connection.Wait(library.context_get_server_info(connection.Context(), TakeServer, &facts),
                        deadline) &&
        connection.Wait(
            library.context_get_source_info_list(connection.Context(), TakeSource, &facts),
            deadline);
    if (!answered) return std::nullopt;
    return facts;
}

}  // namespace engine
