#include "session/read_only_files.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "platform/error.h"

namespace session {
namespace {

// No disk has it.
constexpr std::uint64_t kPretendedDevice = std::numeric_limits<std::uint64_t>::max();

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

std::optional<platform::FileIdentity> ReadOnlyFiles::Identify(const std::string& path) {
    if (const auto identity = files_->Identify(path)) return identity;
    const std::string absolute = GetAbsolutePathName(path);
    if (!pretended_files_.contains(absolute) && !folders_.contains(absolute)) return std::nullopt;
    auto found = std::find(identified_.begin(), identified_.end(), absolute);
    if (found == identified_.end()) found = identified_.insert(found, absolute);
    return platform::FileIdentity{kPretendedDevice,
                                  static_cast<std::uint64_t>(found - identified_.begin())};
}

std::shared_ptr<platform::TextStream> ReadOnlyFiles::OpenTextFile(const std::string& path,
                                                                  platform::OpenMode mode,
                                                                  bool create) {
    if (mode == platform::OpenMode::Reading) return files_->OpenTextFile(path, mode, create);
    writes_.push_back({Write::Kind::TextFile, GetAbsolutePathName(path)});
    return std::make_shared<ForgetfulStream>();
}

void ReadOnlyFiles::WriteBytes(const std::string& path, const std::string& /*bytes*/) {
    writes_.push_back({Write::Kind::TextFile, GetAbsolutePathName(path)});
}

platform::SpecialFolder ReadOnlyFiles::GetSpecialFolder(platform::SpecialFolderKind kind) {
    return files_->GetSpecialFolder(kind);
}

}  // namespace session
