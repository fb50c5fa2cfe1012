#include "cli/config_file.h"

#include <algorithm>
#include <memory>
#include <string_view>

#include <fmt/core.h>

#include "platform/text.h"

namespace cli {
namespace {

constexpr std::string_view kExtension = ".weu";

bool HasExtension(const std::string& path) {
    return path.size() >= kExtension.size() &&
           platform::LowerCase(path.substr(path.size() - kExtension.size())) == kExtension;
}

}  // namespace

std::optional<std::vector<std::string>> ReadConfigFile(platform::FileSystem& files,
                                                       platform::OutputPane& pane,
                                                       const std::string& name) {
    const std::string path = files.GetAbsolutePathName(name);
    const std::shared_ptr<platform::TextStream> stream =
        files.OpenTextFile(path, platform::OpenMode::Reading, false);
    const std::string line = platform::TrimBlanks(stream->ReadLine());
    stream->Close();
    if (line.empty()) {
        pane.OutputError(fmt::format("Configuration file {} is empty", path));
        return std::nullopt;
    }
    return platform::Split(line, ' ');
}

bool WriteConfigFile(platform::FileSystem& files, platform::OutputPane& pane,
                     CommandActions& actions, const std::string& name, const std::string& text,
                     std::span<const std::string> inputs) {
    std::string path = files.GetAbsolutePathName(name);
    if (!HasExtension(path)) path += kExtension;
    const auto is_input = [&](const std::string& input) {
        return !input.empty() && files.IsSame(path, input);
    };
    if (std::any_of(inputs.begin(), inputs.end(), is_input)) {
        pane.OutputError(
            fmt::format("Configuration file {} is the input: give -s_config another name", path));
        return false;
    }
    actions.CreateOutputFolder(files.GetParentFolderName(path));
    const std::shared_ptr<platform::TextStream> stream =
        files.OpenTextFile(path, platform::OpenMode::Writing, true);
    stream->Write(text);
    stream->Close();
    return true;
}

}  // namespace cli
