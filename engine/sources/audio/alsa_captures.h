// The capture devices of the sound cards, for machines without a sound server.
#pragma once

#include <vector>

#include "engine/plan/device_facts.h"

namespace engine {

/// A card that cannot be opened is passed over. Writes nothing to stderr. From any thread.
std::vector<AlsaCapture> AlsaCaptures();

}  // namespace engine
