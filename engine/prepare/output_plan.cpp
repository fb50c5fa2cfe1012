#include "engine/prepare/output_plan.h"

#include <algorithm>
#include <string>

#include <fmt/format.h>

#include "engine/outputs/asf/packet_size.h"
#include "engine/outputs/asf/part_name.h"
#include "engine/plan/value_checks.h"

namespace engine {

namespace {

// As long as a player may have to wait for its first frame.
constexpr std::int32_t kLongestJoinMs = 10'000;

constexpr std::uint32_t kMostStreamedPacketBytes = 65'527;

PushOutput PlanPush(const BroadcastRecord& record, const NetworkSettings& network) {
    if (record.publishing_point.empty())
        RefuseArgument(
            fmt::format("The server {} is given no publishing point: give -push both, such as "
                        "-push {} live",
                        record.server, record.server));
    PushOutput push;
    push.server = record.server;
    push.publishing_point = record.publishing_point;
    push.template_name = record.template_name;
    push.credentials = network.push_user;
    push.ask = network.ask_push_user;
    if (!network.push_agent.empty()) push.agent = network.push_agent;
    push.any_server = network.push_to_any_server;
    return push;
}

// The host's own name of the output file.
std::string CheckedOutput(const std::string& name, const SourceGroupRecord& group,
                          platform::FileSystem& files) {
    std::string path = files.GetAbsolutePathName(name);
    const std::string exact_name = files.NameOf(path);
    if (files.FolderExists(exact_name))
        RefuseArgument(fmt::format("The output {} is a folder: give -output a file", path));
    const std::string folder = files.GetParentFolderName(exact_name);
    if (!folder.empty() && !files.FolderExists(files.NameOf(folder)))
        throw platform::Error(platform::kPathNotFound,
                              fmt::format("The folder {} of the output {} does not exist: make it "
                                          "or give -output another",
                                          folder, path));
    const auto refuse_input = [&](const SourceInput& input) {
        if (input.IsFile() && files.IsSame(input.host_path, exact_name))
            RefuseArgument(fmt::format("The output {} is the input {}: give -output another name",
                                       path, input.host_path));
        const std::string part = PartName(OutputTarget(path));
        if (input.IsFile() && files.IsSame(input.host_path, files.NameOf(part)))
            RefuseArgument(
                fmt::format("The output {} grows as {}, which is the input: give -output "
                            "another name or rename the input",
                            path, part));
    };
    for (const AudioSourceRecord& source : group.audio) refuse_input(source.input);
    for (const VideoSourceRecord& source : group.video) refuse_input(source.input);
    return path;
}

}  // namespace

std::vector<OutputPlan> PlanOutputs(const SessionRecord& session, const SourceGroupRecord& group,
                                    bool keeps_file, const PrepareParts& parts) {
    std::vector<OutputPlan> outputs;
    if (session.broadcast.http_port != 0)
        outputs.emplace_back(
            BroadcastOutput{static_cast<std::uint16_t>(session.broadcast.http_port),
                            parts.network.broadcast_address});
    if (!session.broadcast.server.empty())
        outputs.emplace_back(PlanPush(session.broadcast, parts.network));
    if (!session.output.empty())
        outputs.emplace_back(
            FileOutput{CheckedOutput(session.output, group, parts.files), keeps_file});
    if (outputs.empty())
        RefuseArgument(
            "There is no output: give -output a file, -broadcast a port or -push a server");
    return outputs;
}

void PlanJoining(EncodePlan& plan) {
    if (!plan.IsStreamed()) return;
    if (plan.min_packet_bytes > kMostStreamedPacketBytes)
        RefuseArgument(
            fmt::format("The least packet size {} is too large for what is streamed: give "
                        "-minpacket at most {}",
                        plan.min_packet_bytes, kMostStreamedPacketBytes));
    if (!plan.video) return;
    plan.video->joined = true;
    std::int32_t& distance = plan.video->key_frame_distance_ms;
    distance = distance > 0 ? std::min(distance, kLongestJoinMs) : kLongestJoinMs;
}

void PlanPackets(const ProfileRecord& profile, EncodePlan& plan) {
    if (profile.max_packet_bytes != 0 &&
        static_cast<std::uint32_t>(profile.max_packet_bytes) < asf::kMinPacketBytes)
        RefuseArgument(
            fmt::format("The greatest packet size {} is too small: give -maxpacket at least {}",
                        profile.max_packet_bytes, asf::kMinPacketBytes));
    if (profile.max_packet_bytes != 0 && profile.min_packet_bytes > profile.max_packet_bytes)
        RefuseArgument(
            fmt::format("The least packet size {} is above the greatest {}: lower "
                        "-minpacket or raise -maxpacket",
                        profile.min_packet_bytes, profile.max_packet_bytes));
    plan.min_packet_bytes = static_cast<std::uint32_t>(profile.min_packet_bytes);
    plan.max_packet_bytes = static_cast<std::uint32_t>(profile.max_packet_bytes);
}

}  // namespace engine
