// How loud it is at the devices that a recording would take.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace platform {

struct SoundLevel {
    std::string name;  // of the device
    double peak = 0;   // the loudest since the last look; 1 = full scale
};

struct SoundLevels {
    std::vector<SoundLevel> devices;  // none until they are open, or when there is a problem
    std::string problem;              // why nothing can be heard; "" = there is none
};

/// Listens as long as it lives, beside whoever records.
class SoundMeter {
  public:
    virtual ~SoundMeter() = default;
    /// Does not wait.
    virtual SoundLevels Take() = 0;
};

/// @param choice  whose sound, as the variable TESSIVO_SOUND takes it; "" = the default device's
/// Returns at once: devices are opened meanwhile.
using SoundMeterMaker = std::function<std::unique_ptr<SoundMeter>(const std::string& choice)>;

}  // namespace platform
