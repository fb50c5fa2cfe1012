// The file-system object over a POSIX file system.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/file_system.h"
#include "platform/host/locale_text.h"
#include "platform/host/path_names.h"

namespace platform::host {

class PosixFileSystem : public FileSystem {
  public:
    PosixFileSystem(PathNames names, LocaleText encoding);

    std::string Separator() const override;
    std::string GetAbsolutePathName(const std::string& path) override;
    /// A file:// URI where the path holds a backslash.
    std::string NameOf(const std::string& path) override;
    std::string GetParentFolderName(const std::string& path) override;
    std::string GetBaseName(const std::string& path) override;
    std::string GetExtensionName(const std::string& path) override;
    bool FolderExists(const std::string& path) override;
    bool FileExists(const std::string& path) override;
    void CreateFolder(const std::string& path) override;
    /// A link to a folder that holds the listed one is left out: following it would never end.
    Folder GetFolder(const std::string& path) override;
    std::optional<FileIdentity> Identify(const std::string& path) override;
    bool IsSpecialFile(const std::string& path) override;
    std::shared_ptr<TextStream> OpenTextFile(const std::string& path, OpenMode mode,
                                             bool create) override;
    /// The Windows folders keep their names on drive C; the temporary folder is the host's.
    std::string ReadBytes(const std::string& path, std::size_t most) override;
    void WriteBytes(const std::string& path, const std::string& bytes) override;
    SpecialFolder GetSpecialFolder(SpecialFolderKind kind) override;

  private:
    PathNames names_;
    LocaleText encoding_;
};

/// With the user's drive root and encoding.
std::shared_ptr<FileSystem> MakeFileSystem();

}  // namespace platform::host
