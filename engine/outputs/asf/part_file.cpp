#include "engine/outputs/asf/part_file.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "engine/outputs/part_name.h"
#include "platform/error.h"

namespace engine::asf {
namespace {

[[noreturn]] void FailAsRemoved(const std::string& target) {
    throw platform::Error(
        platform::kPathNotFound,
        fmt::format("Cannot write \"{}\": its folder was removed while the file was written; make "
                    "the folder or choose another, and encode again",
                    target));
}

}  // namespace

PartFile::PartFile(const std::string& path) : target_(path) {
    namespace fs = std::filesystem;
    std::error_code none;
    if (fs::is_symlink(path, none)) {
        const fs::path target = fs::canonical(path, none);
        if (!none) target_ = target.string();
    }
    const fs::file_status there = fs::status(target_, none);
    if (fs::is_directory(there)) FailToWrite(path, EISDIR);
    // To replace a file its folder's permissions are enough; whoever protects it means the file.
    if (fs::exists(there) && ::access(target_.c_str(), W_OK) != 0) FailToWrite(path, errno);
    const bool in_place = fs::exists(there) && !fs::is_regular_file(there);
    path_ = in_place ? target_ : PartName(target_);
    file_.emplace(path_, path);
}

void PartFile::Append(std::span<const std::uint8_t> bytes) {
    if (path_ != target_ && !file_->HasName()) FailAsRemoved(target_);
    file_->Append(bytes);
}

void PartFile::Publish() {
    file_->Sync();
    if (path_ != target_) {
        if (!file_->HasName()) FailAsRemoved(target_);
        file_->Rename(target_);
        path_ = target_;
    }
    file_.reset();
}

void PartFile::Discard() {
    std::error_code none;
    // A file of this name that is another's by now stays.
    if (path_ != target_ && file_ && file_->HasName()) std::filesystem::remove(path_, none);
    file_.reset();
    discarded_ = true;
}

std::string PartFile::Remains() const {
    std::error_code none;
    const bool left = !discarded_ && path_ != target_ && file_ && file_->HasName() &&
                      std::filesystem::exists(path_, none);
    return left ? path_ : std::string();
}

}  // namespace engine::asf
