// The sources of the PulseAudio server, or of PipeWire's in its place.
#pragma once

#include <chrono>
#include <optional>

#include "engine/plan/device_facts.h"

namespace engine {

/// Absent when the client library is not installed, no server runs, or it does not answer in time.
/// Starts no server. From any thread.
std::optional<PulseFacts> AskPulseServer(std::chrono::milliseconds patience);

}  // namespace engine
