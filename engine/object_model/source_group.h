// Source groups: the sources that are encoded together, and the profile they are encoded with.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/object_model/profile.h"
#include "engine/object_model/source.h"
#include "engine/plan/session_record.h"

namespace engine {

class SourceGroup : public platform::WMEncSourceGroup {
  public:
    SourceGroup(std::string name, std::shared_ptr<const EngineParts> parts)
        : name_(std::move(name)), parts_(std::move(parts)) {}
    /// As it was set up before, with inputs that may be named only.
    SourceGroup(const SourceGroupRecord& record, std::shared_ptr<const EngineParts> parts);

    std::string Name() const override { return name_; }
    std::shared_ptr<platform::WMEncSource> AddSource(platform::SourceType type) override;
    void AutoSetFileSource(const std::string& path) override;
    int SourceCount(platform::SourceType type) const override;
    std::shared_ptr<platform::WMEncSource> Source(platform::SourceType type, int index) override;
    std::shared_ptr<platform::WMEncProfile2> Profile() override { return profile_; }
    void SetProfile(const platform::WMEncProfile2& profile) override;

    /// Opens the inputs that are named only. Throws what OpenInput throws.
    void OpenNamed();
    /// The group as it is set up now.
    SourceGroupRecord Record() const;

  private:
    std::string name_;
    std::shared_ptr<const EngineParts> parts_;
    std::vector<std::shared_ptr<AudioSource>> audio_;
    std::vector<std::shared_ptr<VideoSource>> video_;
    std::shared_ptr<engine::Profile> profile_;
};

class SourceGroups : public platform::WMEncSourceGroupCollection {
  public:
    explicit SourceGroups(std::shared_ptr<const EngineParts> parts) : parts_(std::move(parts)) {}

    /// Throws Error (invalid argument) for a name that is taken.
    std::shared_ptr<platform::WMEncSourceGroup> Add(const std::string& name) override;
    int Count() const override { return static_cast<int>(groups_.size()); }
    std::shared_ptr<platform::WMEncSourceGroup> Item(int index) override;
    void Remove(const std::string& name) override;

    /// In the place of the groups that there are.
    void TakeOver(const std::vector<SourceGroupRecord>& records);
    void OpenNamed();
    std::vector<SourceGroupRecord> Records() const;

  private:
    std::shared_ptr<const EngineParts> parts_;
    std::vector<std::shared_ptr<SourceGroup>> groups_;
};

}  // namespace engine
