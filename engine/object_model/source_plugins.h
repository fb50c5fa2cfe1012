// The source plug-ins: what captures audio, cameras and screens, with the devices of each.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "engine/object_model/engine_parts.h"

namespace engine {

/// One plug-in a kind of device that this machine has. Devices are looked for when the first
/// question comes and then stay as they are, so that numbers hold as long as the encoder; the time
/// that takes is no cost of commands that do without. From any thread.
class SourcePlugins : public platform::WMEncSourcePluginInfoManager {
  public:
    explicit SourcePlugins(std::shared_ptr<const EngineParts> parts) : parts_(std::move(parts)) {}

    int Count() const override { return static_cast<int>(Plugins().size()); }
    std::shared_ptr<platform::WMEncSourcePluginInfo> Item(int index) override;

  private:
    using PluginPtr = std::shared_ptr<platform::WMEncSourcePluginInfo>;
    const std::vector<PluginPtr>& Plugins() const;

    std::shared_ptr<const EngineParts> parts_;
    mutable std::once_flag asked_;
    mutable std::vector<PluginPtr> plugins_;
};

}  // namespace engine
