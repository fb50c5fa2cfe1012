#include "session/output_setup.h"

#include <cstdint>
#include <optional>
#include <string>

#include <fmt/core.h>

#include "cli/value_readers.h"
#include "session/output_folder.h"

namespace session {
namespace {

constexpr const char* kDefaultBaseName = "output";
constexpr const char* kVideoExtension = "wmv";
constexpr const char* kAudioExtension = "wma";
constexpr std::int32_t kLeastPort = 1;
constexpr std::int32_t kMostPort = 65535;

// A command that was refused in the middle leaves a value unread, and the three are written
// together.
std::int32_t Negated(const std::optional<std::int32_t>& value) {
    return -value.value_or(cli::kUnread);
}

}  // namespace

OutputSetup::OutputSetup(platform::SessionState& state, cli::EncodeSettings& settings,
                         platform::OutputPane& pane)
    : state_(state), settings_(settings), pane_(pane) {}

bool OutputSetup::SetupOutput() {
    if (!settings_.output.empty()) {
        SetupOutputFile();
    } else {
        // A session file may have named one.
        settings_.output = state_.g_objEncoder->File().LocalFileName();
    }

    auto& broadcast = state_.g_objEncoder->Broadcast();
    if (settings_.broadcast) {
        const std::int32_t port = *settings_.broadcast;
        if (port < kLeastPort || port > kMostPort) {
            pane_.OutputError(
                fmt::format("{} is no port to broadcast on: give -broadcast one from {} "
                            "to {}, or none for 8080",
                            port, kLeastPort, kMostPort));
            return false;
        }
        broadcast.SetPortNumber(platform::BroadcastProtocol::Http, port);
    }
    if (!settings_.push.server_name.empty()) {
        broadcast.SetServerName(settings_.push.server_name);
        broadcast.SetPublishingPoint(settings_.push.publishing_point);
        if (!settings_.push.template_name.empty())
            broadcast.SetTemplate(settings_.push.template_name);
    }
    return true;
}

void OutputSetup::SetupOutputFile() {
    auto& files = *state_.g_objFSO;
    std::string& output = settings_.output;

    if (files.FolderExists(output)) {
        const std::string base_name =
            settings_.input.empty() ? kDefaultBaseName : files.GetBaseName(settings_.input);
        output = PathInFolder(files, output, base_name);
    }
    if (files.GetExtensionName(output).empty()) {
        if (output.back() != '.') output += '.';
        const bool has_video = state_.g_objSrcGrp->SourceCount(platform::SourceType::Video) > 0;
        output += has_video ? kVideoExtension : kAudioExtension;
    }
    CreateOutputFolder(files,
                       files.GetParentFolderName(files.NameOf(files.GetAbsolutePathName(output))));
    state_.g_objEncoder->File().SetLocalFileName(output);
}

bool OutputSetup::SetupTime() {
    if (settings_.device_input && !settings_.duration) {
        pane_.OutputError("Duration must be specified when capturing from devices.");
        return false;
    }
    if (const auto start = settings_.time.start) {
        if (state_.g_objSrcAud) state_.g_objSrcAud->SetMarkIn(*start);
        if (state_.g_objSrcVid) state_.g_objSrcVid->SetMarkIn(*start);
    }
    if (const auto end = settings_.time.end) {
        if (state_.g_objSrcAud) state_.g_objSrcAud->SetMarkOut(*end);
        if (state_.g_objSrcVid) state_.g_objSrcVid->SetMarkOut(*end);
    }
    return true;
}

bool OutputSetup::SetupDisplayInfo() {
    auto& info = state_.g_objEncoder->DisplayInfo();
    if (!settings_.title.empty()) info.SetTitle(settings_.title);
    if (!settings_.author.empty()) info.SetAuthor(settings_.author);
    if (!settings_.copyright.empty()) info.SetCopyright(settings_.copyright);
    if (!settings_.description.empty()) info.SetDescription(settings_.description);
    if (!settings_.rating.empty()) info.SetRating(settings_.rating);

    const auto& fold_down = settings_.a_folddown6to2;
    if (fold_down.surround) {
        auto& attributes = state_.g_objEncoder->Attributes();
        attributes.Add("SurroundMix", Negated(fold_down.surround));
        attributes.Add("CenterMix", Negated(fold_down.center));
        attributes.Add("LFEMix", Negated(fold_down.lfe));
    }
    return true;
}

}  // namespace session
