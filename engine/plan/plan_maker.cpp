#include "engine/plan/plan_maker.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "engine/outputs/part_name.h"
#include "engine/plan/input_plans.h"
#include "engine/plan/stream_plans.h"

namespace engine {

namespace {

using platform::kContentAudio;
using platform::kContentVideo;

[[noreturn]] void RefuseUnbuilt(const std::string& description) {
    throw platform::Error(platform::kNotImplemented, description);
}

std::string InputName(const SourceInput& input) {
    if (!input.IsSet()) return "one without input";
    return input.scheme.empty() ? input.input : fmt::format("{} ({})", input.input, input.scheme);
}

template <typename Source>
void RefuseSecond(const char* medium, const std::vector<std::shared_ptr<Source>>& sources) {
    if (sources.size() > 1)
        RefuseArgument(fmt::format("There are two {} sources, {} and {}: give one of them", medium,
                                   InputName(sources[0]->Opened()),
                                   InputName(sources[1]->Opened())));
}

// The one group with sources and a profile.
const SourceGroup& CheckedGroup(const SourceGroups& groups) {
    if (groups.Count() > 1)
        RefuseArgument(fmt::format("There are two source groups, {} and {}: one can be encoded",
                                   groups.Groups()[0]->Name(), groups.Groups()[1]->Name()));
    if (groups.Count() == 0 ||
        (groups.Groups()[0]->AudioSources().empty() && groups.Groups()[0]->VideoSources().empty()))
        RefuseArgument("There is no input: give -input a media file");
    const SourceGroup& group = *groups.Groups()[0];
    RefuseSecond("audio", group.AudioSources());
    RefuseSecond("video", group.VideoSources());
    if (group.OwnProfile() == nullptr || group.OwnProfile()->State().audiences.empty())
        RefuseArgument(
            fmt::format("The source group {} has no profile: give -profile a code, or "
                        "audio and video options",
                        group.Name()));
    return group;
}

// The source of a stream that the profile has; null when the profile is of the other kind.
template <typename Source>
const Source* SourceOf(const char* medium, const ProfileState& profile, std::int32_t kind,
                       const std::vector<std::shared_ptr<Source>>& sources) {
    if ((profile.content_type & kind) == 0) return nullptr;
    if (sources.empty())
        RefuseArgument(
            fmt::format("The profile {} has {}, but there is no {} source: choose a "
                        "profile without it or another input",
                        profile.name, medium, medium));
    const SourceInput& input = sources.front()->Opened();
    if (!input.IsSet())
        RefuseArgument(fmt::format("The {} source has no input: give -input a media file", medium));
    return sources.front().get();
}

void RefuseUnbuiltOutputs(const Broadcast& broadcast) {
    const std::int32_t port = broadcast.PortNumber(platform::BroadcastProtocol::Http);
    if (port != 0)
        RefuseUnbuilt(
            fmt::format("Broadcasting on port {} is not possible yet: leave -broadcast "
                        "out and give -output a file",
                        port));
    if (!broadcast.ServerName().empty())
        RefuseUnbuilt(
            fmt::format("Pushing to the server {} is not possible yet: leave -push out "
                        "and give -output a file",
                        broadcast.ServerName()));
}

std::string CheckedOutput(const std::string& name, const SourceGroup& group,
                          platform::FileSystem& files) {
    if (name.empty()) RefuseArgument("There is no output: give -output a file");
    std::string path = files.GetAbsolutePathName(name);
    if (files.FolderExists(path))
        RefuseArgument(fmt::format("The output {} is a folder: give -output a file", path));
    const std::string folder = files.GetParentFolderName(path);
    if (!folder.empty() && !files.FolderExists(folder))
        throw platform::Error(platform::kPathNotFound,
                              fmt::format("The folder {} of the output {} does not exist: make it "
                                          "or give -output another",
                                          folder, path));
    const auto refuse_input = [&](const SourceInput& input) {
        if (input.IsFile() && files.IsSame(input.host_path, path))
            RefuseArgument(fmt::format("The output {} is the input {}: give -output another name",
                                       path, input.host_path));
        const std::string part = PartName(path);
        if (input.IsFile() && files.IsSame(input.host_path, part))
            RefuseArgument(
                fmt::format("The output {} grows as {}, which is the input: give -output "
                            "another name or rename the input",
                            path, part));
    };
    for (const auto& source : group.AudioSources()) refuse_input(source->Opened());
    for (const auto& source : group.VideoSources()) refuse_input(source->Opened());
    return path;
}

// How many channels a device has shows when it is opened.
bool MayBeSurround(const SourceInput& input) {
    return input.capture || input.media->audio->channels > 2;
}

void CheckCaptures(const EncodePlan& plan) {
    if (!plan.IsLive()) return;
    const auto& audio = plan.audio;
    const auto& video = plan.video;
    if (audio && video && !(audio->input.capture && video->input.capture))
        RefuseUnbuilt(
            fmt::format("{} and {}: a file and what is captured cannot be encoded together; record "
                        "first, then encode",
                        audio->input.Name(), video->input.Name()));
    if (plan.passes > 1)
        RefuseArgument(
            fmt::format("{} is captured, and two passes would need it twice: choose a profile of "
                        "one pass, or give -a_mode 2 and -v_mode 2",
                        video ? video->input.Name() : audio->input.Name()));
}

void PlanPackets(const ProfileState& profile, EncodePlan& plan) {
    if (profile.max_packet_bytes != 0 && profile.min_packet_bytes > profile.max_packet_bytes)
        RefuseArgument(
            fmt::format("The least packet size {} is above the greatest {}: lower "
                        "-minpacket or raise -maxpacket",
                        profile.min_packet_bytes, profile.max_packet_bytes));
    plan.min_packet_bytes = static_cast<std::uint32_t>(profile.min_packet_bytes);
    plan.max_packet_bytes = static_cast<std::uint32_t>(profile.max_packet_bytes);
}

}  // namespace

EncodePlan MakePlan(const SessionTree& tree, platform::FileSystem& files) {
    const SourceGroup& group = CheckedGroup(tree.groups);
    const ProfileState& profile = group.OwnProfile()->State();
    const AudioSource* audio = SourceOf("audio", profile, kContentAudio, group.AudioSources());
    const VideoSource* video = SourceOf("video", profile, kContentVideo, group.VideoSources());
    RefuseUnbuiltOutputs(tree.broadcast);

    EncodePlan plan;
    if (audio != nullptr) {
        plan.audio = PlanAudio(*audio, profile);
        if (MayBeSurround(audio->Opened()) && plan.audio->written.format.channels == 2)
            plan.audio->fold_down = PlanFoldDown(tree.attributes.Items());
    }
    std::optional<CameraFormat> camera;
    if (video != nullptr) {
        camera = video->CameraFormatFor(PlanCameraWish(*video, profile));
        plan.video = PlanVideo(*video, profile, tree.video_performance, camera);
    }
    PlanPackets(profile, plan);
    plan.output_path = CheckedOutput(tree.file.LocalFileName(), group, files);
    plan.auto_stop = tree.auto_stop;
    plan.content = tree.display.Content();
    plan.attributes = tree.attributes.Items();
    if (audio != nullptr) {
        plan.audio->input = PlanInput(*audio);
        plan.media_length = EncodedLength(*audio);
        if (audio->PreProcessPass() == 1) plan.passes = 2;
    }
    if (video != nullptr) {
        plan.video->input = PlanInput(*video);
        plan.media_length = std::max(plan.media_length, EncodedLength(*video));
        if (video->PreProcessPass() == 1) plan.passes = 2;
        if (plan.video->input.capture) plan.video->input.capture->rate = plan.video->expected_rate;
        if (camera) plan.video->input.capture->camera = *camera;
    }
    CheckCaptures(plan);
    return plan;
}

}  // namespace engine
