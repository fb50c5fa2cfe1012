#include "engine/object_model/source_group.h"

#include <algorithm>

#include <fmt/format.h>

namespace engine {

using platform::SourceType;

std::shared_ptr<platform::WMEncSource> SourceGroup::AddSource(SourceType type) {
    CheckAudioOrVideo(type);
    if (type == SourceType::Audio)
        return audio_.emplace_back(std::make_shared<AudioSource>(parts_));
    return video_.emplace_back(std::make_shared<VideoSource>(parts_));
}

void SourceGroup::AutoSetFileSource(const std::string& path) {
    const SourceInput opened = OpenFileInput(*parts_, path);
    if (!opened.media->audio && !opened.media->video)
        throw platform::Error(platform::kInvalidData,
                              fmt::format("{} has neither sound nor picture", opened.host_path));
    if (opened.media->audio)
        audio_.emplace_back(std::make_shared<AudioSource>(parts_))->TakeInput(opened);
    if (opened.media->video)
        video_.emplace_back(std::make_shared<VideoSource>(parts_))->TakeInput(opened);
}

int SourceGroup::SourceCount(SourceType type) const {
    if (type == SourceType::Audio) return static_cast<int>(audio_.size());
    return type == SourceType::Video ? static_cast<int>(video_.size()) : 0;
}

std::shared_ptr<platform::WMEncSource> SourceGroup::Source(SourceType type, int index) {
    if (index < 0 || index >= SourceCount(type))
        RefuseArgument(fmt::format("The source group {} has no source {} of type {}", name_, index,
                                   static_cast<std::int32_t>(type)));
    const auto place = static_cast<std::size_t>(index);
    if (type == SourceType::Audio) return audio_[place];
    return video_[place];
}

void SourceGroup::SetProfile(const platform::WMEncProfile2& profile) {
    profile_ = std::make_shared<engine::Profile>(parts_->files, Profile::StateOf(profile));
}

SourceGroupRecord SourceGroup::Record() const {
    SourceGroupRecord record;
    record.name = name_;
    for (const auto& source : audio_) record.audio.push_back(source->State());
    for (const auto& source : video_) record.video.push_back(source->State());
    if (profile_) record.profile = profile_->State();
    return record;
}

std::shared_ptr<platform::WMEncSourceGroup> SourceGroups::Add(const std::string& name) {
    for (const auto& group : groups_)
        if (group->Name() == name)
            RefuseArgument(
                fmt::format("There is a source group {} already: remove it first", name));
    return groups_.emplace_back(std::make_shared<SourceGroup>(name, parts_));
}

std::shared_ptr<platform::WMEncSourceGroup> SourceGroups::Item(int index) {
    if (index < 0 || index >= Count())
        RefuseArgument(fmt::format("There is no source group {}", index));
    return groups_[static_cast<std::size_t>(index)];
}

std::vector<SourceGroupRecord> SourceGroups::Records() const {
    std::vector<SourceGroupRecord> records;
    for (const auto& group : groups_) records.push_back(group->Record());
    return records;
}

void SourceGroups::Remove(const std::string& name) {
    std::erase_if(groups_, [&](const auto& group) { return group->Name() == name; });
}

}  // namespace engine
