#include "engine/sources/sound_meter.h"

#include <algorithm>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "engine/sources/audio/pulse_meter.h"
#include "engine/sources/device_discovery.h"
#include "engine/sources/sound_choice.h"
#include "platform/error.h"

namespace engine {
namespace {

constexpr const char* kNoServer =
    "There is no level to be seen: this takes the desktop's sound server, PulseAudio or PipeWire";

DeviceList Chosen(const std::string& choice) {
    const DeviceList devices = DiscoverDevices();
    const Device chosen = ChosenSound(devices, choice);
    DeviceList each;
    std::copy_if(devices.begin(), devices.end(), std::back_inserter(each),
                 [&](const Device& device) {
                     return device.kind == DeviceKind::PulseSource &&
                            (device.id == chosen.id || device.id == chosen.mixed_id);
                 });
    return each;
}

class Meter : public platform::SoundMeter {
  public:
    explicit Meter(std::string choice)
        : thread_([this, choice = std::move(choice)] { Run(choice); }) {}
    ~Meter() override {
        {
            const std::lock_guard lock(mutex_);
            ended_ = true;
            if (meter_) meter_->Wake();
        }
        thread_.join();
    }

    platform::SoundLevels Take() override {
        const std::lock_guard lock(mutex_);
        platform::SoundLevels levels{{}, problem_};
        if (!meter_ || !problem_.empty()) return levels;
        const std::vector<double> peaks = meter_->TakePeaks();
        for (std::size_t i = 0; i < peaks.size(); ++i)
            levels.devices.push_back({devices_[i].name, peaks[i]});
        return levels;
    }

  private:
    void Run(const std::string& choice) {
        try {
            const DeviceList devices = Chosen(choice);
            if (devices.empty() || !Listen(devices)) Say(kNoServer);
        } catch (const platform::Error& error) {
            Say(error.description());
        }
    }

    bool Listen(const DeviceList& devices) {
        std::vector<std::string> sources;
        for (const Device& device : devices) sources.push_back(device.id);
        auto meter = std::make_unique<PulseMeter>(sources);
        {
            const std::lock_guard lock(mutex_);
            if (ended_) return true;
            devices_ = devices;
            meter_ = std::move(meter);
        }
        return meter_->Run();
    }

    void Say(const std::string& problem) {
        const std::lock_guard lock(mutex_);
        problem_ = problem;
    }

    std::mutex mutex_;
    bool ended_ = false;
    std::string problem_;
    DeviceList devices_;
    std::unique_ptr<PulseMeter> meter_;
    std::thread thread_;  // begins when all else is there
};

}  // namespace

std::unique_ptr<platform::SoundMeter> OpenSoundMeter(const std::string& choice) {
    return std::make_unique<Meter>(choice);
}

}  // namespace engine
