#include "engine/object_model/source_plugins.h"

#include <string>
#include <utility>

#include <fmt/format.h>

#include "engine/plan/value_checks.h"
#include "engine/sources/device_list.h"

namespace engine {
namespace {

using platform::PluginMediaType;
using platform::SourceType;

class DevicePlugin : public platform::WMEncSourcePluginInfo {
  public:
    explicit DevicePlugin(DeviceKind kind) : kind_(kind) {}

    DeviceKind Kind() const { return kind_; }
    void Add(std::string name) { names_.push_back(std::move(name)); }

    bool Resources() const override { return true; }
    PluginMediaType MediaType() const override {
        return MediumOf(kind_) == SourceType::Audio ? PluginMediaType::Audio
                                                    : PluginMediaType::Video;
    }
    int Count() const override { return static_cast<int>(names_.size()); }
    std::string Item(int index) const override {
        if (index < 0 || index >= Count())
            RefuseArgument(fmt::format("The source plug-in has no device {}", index));
        return names_[static_cast<std::size_t>(index)];
    }

  private:
    DeviceKind kind_;
    std::vector<std::string> names_;
};

}  // namespace

const std::vector<SourcePlugins::PluginPtr>& SourcePlugins::Plugins() const {
    std::call_once(asked_, [this] {
        if (!parts_->devices) return;
        std::shared_ptr<DevicePlugin> last;
        for (const Device& device : parts_->devices()) {
            if (!last || last->Kind() != device.kind) {
                last = std::make_shared<DevicePlugin>(device.kind);
                plugins_.push_back(last);
            }
            last->Add(device.name);
        }
    });
    return plugins_;
}

std::shared_ptr<platform::WMEncSourcePluginInfo> SourcePlugins::Item(int index) {
    if (index < 0 || index >= Count())
        RefuseArgument(fmt::format("There is no source plug-in {}", index));
    return plugins_[static_cast<std::size_t>(index)];
}

}  // namespace engine
