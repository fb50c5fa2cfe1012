#include "engine/prepare/plan_maker.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "engine/plan/value_checks.h"
#include "engine/prepare/audio_plan.h"
#include "engine/prepare/frame_size.h"
#include "engine/prepare/input_plans.h"
#include "engine/prepare/output_plan.h"
#include "engine/prepare/video_plan.h"
#include "engine/sources/device_list.h"
#include "platform/text.h"

namespace engine {

namespace {

using platform::kContentAudio;
using platform::kContentVideo;

bool IsDefaultSound(const SourceInput& input) {
    return input.scheme == "device" && input.input == kDefaultAudioDevice;
}

// With the option that gives it.
std::string TypedName(const SourceInput& input, const char* device_option) {
    if (!input.IsSet()) return "one without input";
    if (input.scheme == "screencap") return "the screen (-profile)";
    if (IsDefaultSound(input)) return "the sound of the screen's profile (-profile)";
    return fmt::format("{} ({})", input.input, input.scheme.empty() ? "-input" : device_option);
}

template <typename Source>
void RefuseSecond(const char* medium, const char* device_option,
                  const std::vector<Source>& sources) {
    if (sources.size() < 2) return;
    const SourceInput& first = sources[0].input;
    const SourceInput& second = sources[1].input;
    const bool own_sound = first.scheme == "device" && IsDefaultSound(second);
    RefuseArgument(fmt::format(
        "There are two {} sources, {} and {}: {}; what earlier commands gave, File > New session "
        "forgets",
        medium, TypedName(first, device_option), TypedName(second, device_option),
        own_sound ? "give a profile without sound and the sound's options, such as -profile scrn10 "
                    "-adevice 1 -a_setting 64_44_2"
                  : "give one of them"));
}

// The one group, which has sources and a profile.
const SourceGroupRecord& CheckedGroup(const std::vector<SourceGroupRecord>& groups) {
    if (groups.size() > 1)
        RefuseArgument(fmt::format("There are two source groups, {} and {}: one can be encoded",
                                   groups[0].name, groups[1].name));
    if (groups.empty() || (groups.front().audio.empty() && groups.front().video.empty()))
        RefuseArgument("There is no input: give -input a media file");
    const SourceGroupRecord& group = groups.front();
    RefuseSecond("audio", "-adevice", group.audio);
    RefuseSecond("video", "-vdevice", group.video);
    if (!group.profile || group.profile->audiences.empty())
        RefuseArgument(
            fmt::format("The source group {} has no profile: give -profile a code, or "
                        "audio and video options",
                        group.name));
    return group;
}

// The source of a stream that the profile has; null when the profile is of the other kind.
template <typename Source>
const Source* SourceOf(const char* medium, const ProfileRecord& profile, std::int32_t kind,
                       const std::vector<Source>& sources) {
    if ((profile.Content() & kind) == 0) return nullptr;
    if (sources.empty())
        RefuseArgument(
            fmt::format("The profile {} has {}, but there is no {} source: choose a "
                        "profile without it or another input",
                        profile.name, medium, medium));
    if (!sources.front().input.IsSet())
        RefuseArgument(fmt::format("The {} source has no input: give -input a media file", medium));
    return &sources.front();
}

std::optional<CameraFormat> CameraFormatOf(const VideoSourceRecord& source,
                                           const ProfileRecord& profile,
                                           const PrepareParts& parts) {
    const std::optional<CaptureInput>& capture = source.input.capture;
    if (!capture || capture->device.kind != DeviceKind::Camera) return std::nullopt;
    return parts.camera_format(capture->device, PlanCameraRequest(source, profile));
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

// A profile file may have fewer streams than there are sources.
void AddLeftOutNotice(const ProfileRecord& profile, EncodePlan& plan) {
    const std::int32_t left_out = profile.content_type & ~profile.Content();
    if (left_out == 0) return;
    plan.notices.push_back(fmt::format("The profile {} has no {} stream: the {} is left out.",
                                       profile.name, left_out == kContentAudio ? "audio" : "video",
                                       left_out == kContentAudio ? "sound" : "picture"));
}

void AddSoundNotice(const AudioSourceRecord& source, EncodePlan& plan) {
    if (IsDefaultSound(source.input))
        plan.notices.push_back(
            fmt::format("The sound is that of {}; TESSIVO_SOUND chooses another, as does the Sound "
                        "menu of the window.",
                        source.input.capture->device.name));
}

// A name that promises another kind of file.
void AddNameNotice(const std::string& output, EncodePlan& plan) {
    constexpr std::string_view kOthers[] = {".avi", ".flac", ".m4a", ".m4v",  ".mkv",
                                            ".mov", ".mp3",  ".mp4", ".mpeg", ".mpg",
                                            ".ogg", ".ts",   ".wav", ".webm"};
    const std::size_t dot = output.find_last_of("./");
    const std::string extension =
        dot == std::string::npos ? "" : platform::LowerCase(output.substr(dot));
    if (std::find(std::begin(kOthers), std::end(kOthers), extension) == std::end(kOthers)) return;
    plan.notices.push_back(fmt::format(
        "{} will hold Windows Media whatever its name says; {} is what players expect of that.",
        output, plan.video ? ".wmv" : ".wma"));
}

void AddNotices(const VideoSourceRecord& source, const ProfileRecord& profile, EncodePlan& plan) {
    if (plan.LacksScreen()) return;  // its picture has no size yet
    std::string shape = PixelShapeNotice(source, profile, *plan.video);
    if (!shape.empty()) plan.notices.push_back(std::move(shape));
    if (source.input.IsFile() && !source.input.media->video->hdr.empty())
        plan.notices.push_back(
            fmt::format("{} is HDR ({}); its brightness is mapped to the range that every screen "
                        "shows, for these formats have no other.",
                        source.input.input, source.input.media->video->hdr));
}

}  // namespace

EncodePlan MakePlan(const SessionRecord& session, const PrepareParts& parts) {
    const SourceGroupRecord& group = CheckedGroup(session.groups);
    const ProfileRecord& profile = *group.profile;
    if (profile.content_type != 0 && profile.Content() == 0)
        RefuseArgument(
            fmt::format("The profile {} has no {} stream: choose another profile or another input",
                        profile.name, profile.content_type == kContentAudio ? "audio" : "video"));
    const AudioSourceRecord* audio = SourceOf("audio", profile, kContentAudio, group.audio);
    const VideoSourceRecord* video = SourceOf("video", profile, kContentVideo, group.video);

    EncodePlan plan;
    if (audio != nullptr) {
        plan.audio = PlanAudio(*audio, profile, parts.files);
        if (MayBeSurround(audio->input) && plan.audio->written.format.channels == 2)
            plan.audio->downmix = PlanDownmix(session.attributes);
    }
    std::optional<CameraFormat> camera;
    if (video != nullptr) {
        camera = CameraFormatOf(*video, profile, parts);
        plan.video = PlanVideo(*video, profile, session.video_performance, camera);
    }
    PlanPackets(profile, plan);
    const bool is_live =
        (audio != nullptr && audio->input.capture) || (video != nullptr && video->input.capture);
    plan.outputs = PlanOutputs(session, group, is_live, parts);
    PlanJoining(plan);
    plan.auto_stop = session.auto_stop;
    plan.content = session.content;
    plan.attributes = session.attributes;
    if (audio != nullptr) {
        plan.audio->input = PlanInput(*audio);
        plan.media_length = EncodedLength(*audio);
        if (audio->pre_process_pass == 1) plan.passes = 2;
    }
    if (video != nullptr) {
        plan.video->input = PlanInput(*video);
        plan.media_length = std::max(plan.media_length, EncodedLength(*video));
        if (video->pre_process_pass == 1) plan.passes = 2;
        if (plan.video->input.capture) plan.video->input.capture->rate = plan.video->expected_rate;
        if (camera) plan.video->input.capture->camera = *camera;
    }
    CheckCaptures(plan);
    AddLeftOutNotice(profile, plan);
    AddNameNotice(plan.FilePath(), plan);
    if (audio != nullptr) AddSoundNotice(*audio, plan);
    if (video != nullptr) AddNotices(*video, profile, plan);
    return plan;
}

}  // namespace engine
