#include "engine/object_model/source_group.h"

#include <algorithm>
#include <type_traits>
#include <utility>

#include <fmt/format.h>

namespace engine {

using platform::SourceType;

SourceGroup::SourceGroup(const SourceGroupRecord& record, std::shared_ptr<const EngineParts> parts)
    : SourceGroup(record.name, std::move(parts)) {
    for (const AudioSourceRecord& source : record.audio)
        audio_.push_back(std::make_shared<AudioSource>(parts_, source));
    for (const VideoSourceRecord& source : record.video)
        video_.push_back(std::make_shared<VideoSource>(parts_, source));
    if (record.profile)
        profile_ = std::make_shared<engine::Profile>(parts_->files, *record.profile);
}

void SourceGroup::OpenNamed() {
    for (const auto& source : audio_) source->OpenNamed();
    for (const auto& source : video_) source->OpenNamed();
}

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
    // A loaded session has sources already: their settings stay, their input is this file.
    const auto take = [&](auto& sources, bool has_stream) {
        using Source = typename std::decay_t<decltype(sources)>::value_type::element_type;
        if (!has_stream) return sources.clear();
        if (sources.empty()) sources.push_back(std::make_shared<Source>(parts_));
        sources.front()->TakeInput(opened);
    };
    take(audio_, opened.media->audio.has_value());
    take(video_, opened.media->video.has_value());
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

void SourceGroups::TakeOver(const std::vector<SourceGroupRecord>& records) {
    groups_.clear();
    for (const SourceGroupRecord& record : records)
        groups_.push_back(std::make_shared<SourceGroup>(record, parts_));
}

void SourceGroups::OpenNamed() {
    for (const auto& group : groups_) group->OpenNamed();
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
