#include "session/directory_mode.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <string_view>

#include "platform/error.h"
#include "platform/text.h"
#include "session/error_line.h"
#include "session/output_folder.h"

namespace session {
namespace {

constexpr std::string_view kExtensions[] = {"avi", "wav", "mpg", "mpeg", "vob",
                                            "wmv", "wma", "mp3", "asf"};

/// In lower case, with the last dot before it; "" where there is no dot.
std::string ExtensionOf(const std::string& file) {
    const std::size_t dot = file.rfind('.');
    return dot == std::string::npos ? "" : platform::LowerCase(std::string_view(file).substr(dot));
}

/// The name up to its last dot, when an accepted extension follows that.
std::optional<std::string> MediaBaseName(const std::string& file) {
    const std::string extension = ExtensionOf(file);
    if (extension.empty()) return std::nullopt;
    const auto* const end = std::end(kExtensions);
    if (std::find(std::begin(kExtensions), end, extension.substr(1)) == end) return std::nullopt;
    return file.substr(0, file.size() - extension.size());
}

}  // namespace

DirectoryMode::DirectoryMode(platform::SessionState& state, cli::EncodeSettings& settings,
                             platform::OutputPane& pane, EncoderSetup& encoder_setup, FileRun& run)
    : state_(state), settings_(settings), pane_(pane), encoder_setup_(encoder_setup), run_(run) {}

bool DirectoryMode::DoDirectoryModeEncoding() {
    any_failed_ = false;
    skipped_.clear();
    if (settings_.output.empty()) {
        pane_.OutputError("Error: No output directory specified");
        return false;
    }
    auto& files = *state_.g_objFSO;
    Walk walk{state_.g_objFSO, files.GetAbsolutePathName(settings_.output), {}, {}, {}, {}};
    ListFolder(walk, files.NameOf(files.GetAbsolutePathName(settings_.input)),
               files.NameOf(walk.output_root));
    for (const ListedFolder& folder : walk.folders) {
        if (run_.WalkCancelled()) break;
        if (!folder.skipped_name.empty())
            pane_.OutputInfo("Skipping: " + folder.skipped_name);
        else
            EncodeFilesInFolder(walk, folder);
    }
    return true;
}

void DirectoryMode::ListFolder(Walk& walk, const std::string& input_folder,
                               const std::string& output_folder) {
    auto& files = *walk.files;
    if (const auto identity = files.Identify(input_folder)) walk.listed.insert(*identity);
    ListedFolder listed{{}, input_folder, output_folder, {}, {}};
    platform::Folder folder;
    try {
        folder = files.GetFolder(input_folder);
    } catch (const platform::Error& error) {
        listed.error = error;
    }
    for (std::string& file : folder.files) {
        const std::string path = PathInFolder(files, input_folder, file);
        Input input{std::move(file), std::nullopt};
        if (!files.IsSpecialFile(path)) input.base_name = MediaBaseName(input.name);
        if (input.base_name) {
            if (const auto identity = files.Identify(path)) walk.inputs.insert(*identity);
        }
        listed.files.push_back(std::move(input));
    }
    walk.folders.push_back(std::move(listed));

    for (const std::string& sub_folder : folder.sub_folders) {
        run_.HandleEvents();
        if (run_.WalkCancelled()) return;
        const std::string path = PathInFolder(files, input_folder, sub_folder);
        const auto identity = files.Identify(path);
        // What an earlier walk has put there is no input.
        if (identity && (walk.listed.contains(*identity) ||
                         identity == files.Identify(files.NameOf(walk.output_root))))
            walk.folders.emplace_back().skipped_name = sub_folder;
        else
            ListFolder(walk, path, PathInFolder(files, output_folder, sub_folder));
    }
}

void DirectoryMode::EncodeFilesInFolder(Walk& walk, const ListedFolder& folder) {
    auto& files = *walk.files;
    pane_.OutputInfo("============== Encoding Files in Folder ============== " +
                     files.GetAbsolutePathName(folder.input));
    if (folder.error) Fail(*folder.error);
    for (const Input& input : folder.files) {
        run_.HandleEvents();
        if (run_.WalkCancelled()) return;
        if (!input.base_name) {
            pane_.OutputInfo("Skipping: " + input.name);
            ++skipped_[ExtensionOf(input.name)];
            continue;
        }
        settings_.input = PathInFolder(files, folder.input, input.name);
        settings_.output =
            PathInFolder(files, folder.output, *input.base_name + settings_.outputstring);
        EncodeFile(walk, input.name);
    }
}

void DirectoryMode::EncodeFile(Walk& walk, const std::string& file) {
    pane_.OutputInfo(fmt::format("============== Input {} {}",
                                 walk.files->GetAbsolutePathName(settings_.input),
                                 walk.files->GetAbsolutePathName(settings_.output)));
    settings_.output += '.';  // the set-up adds the extension after it, once it knows the sources
    try {
        run_.PrepareSession();
        if (encoder_setup_.SetupEncoder()) {
            RunFile(walk, file);
        } else {
            any_failed_ = true;
        }
    } catch (const platform::Error& error) {
        Fail(error);
    }
    run_.FinishFile();
    if (!run_.WalkCancelled()) TearDownSession();
}

void DirectoryMode::RunFile(Walk& walk, const std::string& file) {
    auto& files = *walk.files;
    const std::string path = files.GetAbsolutePathName(settings_.output);
    const auto there = files.Identify(settings_.output);
    const bool is_input = there && walk.inputs.contains(*there);
    if (is_input || (there && walk.written.contains(*there))) {
        pane_.OutputError(
            is_input
                ? fmt::format("Skipping: {}, since {} is an input of this walk", file, path)
                : fmt::format("Skipping: {}, since this walk has already written {}", file, path));
        any_failed_ = true;
        return;
    }
    const std::string output = settings_.output;
    const FileRunEnd end = run_.RunToEnd();
    if (run_.WalkCancelled()) return;
    if (end != FileRunEnd::NotStarted) {
        if (const auto written = files.Identify(output)) walk.written.insert(*written);
    }
    if (end != FileRunEnd::Completed) any_failed_ = true;
}

void DirectoryMode::TearDownSession() {
    if (state_.g_objSrcGrp)
        state_.g_objEncoder->SourceGroupCollection().Remove(state_.g_objSrcGrp->Name());
    state_.ClearSources();
}

void DirectoryMode::Fail(const platform::Error& error) {
    any_failed_ = true;
    OutputErrorLine(pane_, error.report());
}

}  // namespace session
