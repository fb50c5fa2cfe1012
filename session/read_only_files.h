// A file system that writes nothing: it notes what would have been written and goes on as if it
// were there.
#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/file_system.h"

namespace session {

class ReadOnlyFiles final : public platform::FileSystem {
  public:
    struct Write {
        enum class Kind { Folder, TextFile } kind;
        std::string path;  // absolute
    };

    explicit ReadOnlyFiles(std::shared_ptr<platform::FileSystem> files)
        : files_(std::move(files)) {}

    /// What would have been written since the last call, in that order.
    std::vector<Write> TakeWrites() { return std::exchange(writes_, {}); }
    /// From now on a file of that name exists.
    void PretendFile(const std::string& path);

    std::string Separator() const override { return files_->Separator(); }
    std::string GetAbsolutePathName(const std::string& path) override;
    std::string NameOf(const std::string& path) override { return files_->NameOf(path); }
    std::string GetParentFolderName(const std::string& path) override;
    std::string GetBaseName(const std::string& path) override;
    std::string GetExtensionName(const std::string& path) override;
    bool FolderExists(const std::string& path) override;
    bool FileExists(const std::string& path) override;
    /// Never fails: whether a folder could be made shows only when it is.
    void CreateFolder(const std::string& path) override;
    platform::Folder GetFolder(const std::string& path) override;
    std::optional<platform::FileIdentity> Identify(const std::string& path) override;
    bool IsSpecialFile(const std::string& path) override { return files_->IsSpecialFile(path); }
    /// What is written to a stream opened for writing is forgotten.
    std::shared_ptr<platform::TextStream> OpenTextFile(const std::string& path,
                                                       platform::OpenMode mode,
                                                       bool create) override;
    std::string ReadBytes(const std::string& path, std::size_t most) override {
        return files_->ReadBytes(path, most);
    }
    void WriteBytes(const std::string& path, const std::string& bytes) override;
    platform::SpecialFolder GetSpecialFolder(platform::SpecialFolderKind kind) override;

  private:
    std::shared_ptr<platform::FileSystem> files_;
    std::vector<Write> writes_;
    std::set<std::string> folders_;          // that would be there by now
    std::set<std::string> pretended_files_;  // the same
    std::vector<std::string> identified_;    // of both, those that were asked for: their numbers
};

}  // namespace session
