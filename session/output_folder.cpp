#include "session/output_folder.h"

#include <string_view>

#include "platform/error.h"
#include "platform/text.h"

namespace session {
namespace {

constexpr std::string_view kUriScheme = "file:";
constexpr std::string_view kSeparators = "/\\";
constexpr char kForeignSeparator = '\\';

}  // namespace

void CreateOutputFolder(platform::FileSystem& files, const std::string& path) {
    const std::string name = files.NameOf(path);
    if (name.empty() || files.FolderExists(name)) return;
    CreateOutputFolder(files, files.GetParentFolderName(name));
    try {
        files.CreateFolder(name);
    } catch (const platform::Error&) {
        // Another process may have made it in between, which is just as good.
        if (!files.FolderExists(name)) throw;
    }
}

std::string PathInFolder(platform::FileSystem& files, const std::string& folder,
                         const std::string& file) {
    // In a URI the name would have to be percent-encoded; a plain path takes it as it is, but for
    // what separates in a typed one.
    const bool as_host_path = platform::StartsWith(platform::LowerCase(folder), kUriScheme) ||
                              file.find(kForeignSeparator) != std::string::npos;
    std::string path = as_host_path ? files.GetAbsolutePathName(folder) : folder;
    const bool has_separator =
        !path.empty() && kSeparators.find(path.back()) != std::string_view::npos;
    if (!has_separator) path += files.Separator();
    path += file;
    return as_host_path ? files.NameOf(path) : path;
}

}  // namespace session
