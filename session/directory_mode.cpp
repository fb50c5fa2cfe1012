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

/// The name up to its last dot, when an accepted extension follows that.
std::optional<std::string> MediaBaseName(const std::string& file) {
    const std::size_t dot = file.rfind('.');
    if (dot == std::string::npos) return std::nullopt;
    const std::string extension = platform::LowerCase(std::string_view(file).substr(dot + 1));
    const auto* const end = std::end(kExtensions);
    if (std::find(std::begin(kExtensions), end, extension) == end) return std::nullopt;
    return file.substr(0, dot);
}

/// Whether one of the paths leads to the same file or folder; letter case and links count as the
/// file system has them.
bool Contains(platform::FileSystem& files, const std::vector<std::string>& paths,
              const std::string& path) {
    return std::any_of(paths.begin(), paths.end(),
                       [&](const std::string& other) { return files.IsSame(path, other); });
}

}  // namespace

DirectoryMode::DirectoryMode(platform::SessionState& state, cli::EncodeSettings& settings,
                             platform::OutputPane& pane, EncoderSetup& encoder_setup, FileRun& run)
    : state_(state), settings_(settings), pane_(pane), encoder_setup_(encoder_setup), run_(run) {}

bool DirectoryMode::DoDirectoryModeEncoding() {
    any_failed_ = false;
    if (settings_.output.empty()) {
        pane_.OutputError("Error: No output directory specified");
        return false;
    }
    auto& files = *state_.g_objFSO;
    Walk walk{state_.g_objFSO, files.GetAbsolutePathName(settings_.output), {}, {}};
    EncodeFilesInFolder(walk, files.GetAbsolutePathName(settings_.input), walk.output_root);
    return true;
}

void DirectoryMode::EncodeFilesInFolder(Walk& walk, const std::string& input_folder,
                                        const std::string& output_folder) {
    pane_.OutputInfo("============== Encoding Files in Folder ============== " + input_folder);
    auto& files = *walk.files;
    platform::Folder folder;
    try {
        folder = files.GetFolder(input_folder);
    } catch (const platform::Error& error) {
        Fail(error);
        return;
    }

    for (const std::string& file : folder.files) {
        const std::string path = PathInFolder(files, input_folder, file);
        const std::optional<std::string> base_name = MediaBaseName(file);
        if (!base_name || Contains(files, walk.written, path)) {
            pane_.OutputInfo("Skipping: " + file);
            continue;
        }
        settings_.input = path;
        settings_.output = PathInFolder(files, output_folder, *base_name + settings_.outputstring);
        EncodeFile(walk, file);
        if (run_.WalkCancelled()) return;
    }

    walk.open_folders.push_back(input_folder);
    for (const std::string& sub_folder : folder.sub_folders) {
        const std::string path = PathInFolder(files, input_folder, sub_folder);
        // What this or an earlier walk has put there is no input, and a link that leads back up
        // would be walked for ever.
        if (files.IsSame(path, walk.output_root) || Contains(files, walk.open_folders, path)) {
            pane_.OutputInfo("Skipping: " + sub_folder);
            continue;
        }
        EncodeFilesInFolder(walk, path, PathInFolder(files, output_folder, sub_folder));
        if (run_.WalkCancelled()) return;
    }
    walk.open_folders.pop_back();
}

void DirectoryMode::EncodeFile(Walk& walk, const std::string& file) {
    pane_.OutputInfo(fmt::format("============== Input {} {}", settings_.input, settings_.output));
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
    const std::string output = files.GetAbsolutePathName(settings_.output);
    if (files.FileExists(output) && Contains(files, walk.written, output)) {
        const std::string reason =
            fmt::format("Skipping: {}, since this walk has already written {}", file, output);
        pane_.OutputInfo(reason);
        run_.PassOver(reason);
        return;
    }
    const FileRunEnd end = run_.RunToEnd();
    if (run_.WalkCancelled()) return;
    if (end != FileRunEnd::NotStarted) walk.written.push_back(output);
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
