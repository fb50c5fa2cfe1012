// Asks the system for its capture devices.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

#include "engine/plan/device_facts.h"
#include "engine/sources/device_list.h"

namespace engine {

/// Where the facts come from; tests put their own in. Each is called from a thread of its own, and
/// may be left running when it takes too long, so it must not refer to what its maker owns. What it
/// throws counts as having found nothing.
struct DeviceBackends {
    std::function<std::optional<PulseFacts>()> pulse;
    std::function<std::vector<AlsaCapture>()> alsa;  // asked only when `pulse` has no answer
    std::function<std::vector<VideoNode>()> cameras;
    std::function<ScreenFacts()> screens;
};

/// Asks all at the same time and waits for `patience` at most; who has not answered by then has
/// nothing to say. Does not throw for any backend. From any thread.
DeviceFacts AskBackends(const DeviceBackends& backends, std::chrono::milliseconds patience);

/// The devices of this machine, now. Takes a few milliseconds, and about a second at most when a
/// server hangs. Starts no server. From any thread, and from several at once.
DeviceList DiscoverDevices();

}  // namespace engine
