#include "session/read_only_files.h"

#include "platform/error.h"

namespace session {
namespace {

class ForgetfulStream final : public platform::TextStream {
  public:
    std::string ReadLine() override {
        throw platform::Error(platform::kInvalidData, "The file is open for writing only.");
    }
    void Write(const std::string& /*text*/) override {}
    void Close() override {}
};

}  // namespace

void ReadOnlyFiles::PretendFile(const std::string& path) {
    pretended_files_.insert(GetAbsolutePathName(path));
}

std::string ReadOnlyFiles::GetAbsolutePathName(const std::string& path) {
    return files_->GetAbsolutePathName(path);
}

std::string ReadOnlyFiles::GetParentFolderName(const std::string& path) {
    return files_->GetParentFolderName(path);
}

std::string ReadOnlyFiles::GetBaseName(const std::string& path) {
    return files_->GetBaseName(path);
}

std::string ReadOnlyFiles::GetExtensionName(const std::string& path) {
    return files_->GetExtensionName(path);
}

bool ReadOnlyFiles::FolderExists(const std::string& path) {
    return files_->FolderExists(path) || folders_.contains(GetAbsolutePathName(path));
}

bool ReadOnlyFiles::FileExists(const std::string& path) {
    return files_->FileExists(path) || pretended_files_.contains(GetAbsolutePathName(path));
}

void ReadOnlyFiles::CreateFolder(const std::string& path) {
    const std::string folder = GetAbsolutePathName(path);
    if (folders_.insert(folder).second) writes_.push_back({Write::Kind::Folder, folder});
}

platform::Folder ReadOnlyFiles::GetFolder(const std::string& path) {
    return files_->GetFolder(path);
}

bool ReadOnlyFiles::IsSame(const std::string& path, const std::string& other) {
    const std::string absolute = GetAbsolutePathName(path);
    const bool pretended = pretended_files_.contains(absolute) || folders_.contains(absolute);
    if (pretended && absolute == GetAbsolutePathName(other)) return true;
    return files_->IsSame(path, other);
}

std::shared_ptr<platform::TextStream> ReadOnlyFiles::OpenTextFile(const std::string& path,
                                                                  platform::OpenMode mode,
                                                                  bool create) {
    if (mode == platform::OpenMode::Reading) return files_->OpenTextFile(path, mode, create);
    writes_.push_back({Write::Kind::TextFile, GetAbsolutePathName(path)});
    return std::make_shared<ForgetfulStream>();
}

platform::SpecialFolder ReadOnlyFiles::GetSpecialFolder(platform::SpecialFolderKind kind) {
    return files_->GetSpecialFolder(kind);
}

}  // namespace session
