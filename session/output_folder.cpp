#include "session/output_folder.h"

#include <string_view>

#include "platform/error.h"
#include "platform/text.h"

namespace session {
namespace {

constexpr std::string_view kUriScheme = "file:";
constexpr std::string_view kSeparators = "/\\";

}  // namespace

void CreateOutputFolder(platform::FileSystem& files, const std::string& path) {
    if (path.empty() || files.FolderExists(path)) return;
    CreateOutputFolder(files, files.GetParentFolderName(path));
    try {
        files.CreateFolder(path);
    } catch (const platform::Error&) {
        // Another process may have made it in between, which is just as good.
        if (!files.FolderExists(path)) throw;
    }
}

std::string PathInFolder(platform::FileSystem& files, const std::string& folder,
                         const std::string& file) {
    // In a URI the name would have to be percent-encoded; a plain path takes it as it is.
    const bool is_uri = platform::StartsWith(platform::LowerCase(folder), kUriScheme);
    std::string path = is_uri ? files.GetAbsolutePathName(folder) : folder;
    const bool has_separator =
        !path.empty() && kSeparators.find(path.back()) != std::string_view::npos;
    if (!has_separator) path += files.Separator();
    return path + file;
}

}  // namespace session
