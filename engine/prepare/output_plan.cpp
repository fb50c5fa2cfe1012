#include "engine/prepare/output_plan.h"

#include <fmt/format.h>

#include "engine/outputs/asf/packet_size.h"
#include "engine/outputs/asf/part_name.h"
#include "engine/plan/value_checks.h"

namespace engine {

void RefuseUnbuiltOutputs(const BroadcastRecord& broadcast) {
    if (broadcast.http_port != 0)
        RefuseUnbuilt(
            fmt::format("Broadcasting on port {} is not possible yet: leave -broadcast "
                        "out and give -output a file",
                        broadcast.http_port));
    if (!broadcast.server.empty())
        RefuseUnbuilt(
            fmt::format("Pushing to the server {} is not possible yet: leave -push out "
                        "and give -output a file",
                        broadcast.server));
}

std::string CheckedOutput(const std::string& name, const SourceGroupRecord& group,
                          platform::FileSystem& files) {
    if (name.empty()) RefuseArgument("There is no output: give -output a file");
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
