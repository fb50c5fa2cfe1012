#include "engine/outputs/asf/part_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "engine/outputs/asf/free_name.h"
#include "engine/outputs/asf/part_name.h"

namespace engine::asf {

PartFile::PartFile(const std::string& path) : target_(OutputTarget(path)) {
    struct stat there {};
    const bool exists = ::stat(target_.c_str(), &there) == 0;
    if (!exists && errno != ENOENT) FailToWrite(path, errno);
    if (exists && S_ISDIR(there.st_mode)) FailToWrite(path, EISDIR);
    // To replace a file its folder's permissions are enough; whoever protects it means the file.
    if (exists && ::access(target_.c_str(), W_OK) != 0) FailToWrite(path, errno);
    const bool in_place = exists && !S_ISREG(there.st_mode);
    path_ = in_place ? target_ : PartName(target_);
    file_.emplace(path_, path, in_place ? Before::Device : Before::Part);
}

void PartFile::Append(std::span<const std::uint8_t> bytes) {
    if (!IsInPlace()) file_->RequireName();
    file_->Append(bytes);
}

void PartFile::Publish() {
    file_->Sync();
    if (!IsInPlace()) {
        file_->Rename(target_);
        path_ = target_;
    }
    file_.reset();
}

// Renaming the other file belongs here and not to the start: a recording that comes to nothing
// leaves it under its name, and one that comes up meanwhile is kept too. Between the two renames
// nothing has the name, and the part, which is whole, waits under its own for a repair to find it.
std::string PartFile::PublishBeside() {
    file_->Sync();
    std::string aside;
    if (!IsInPlace()) {
        while (!file_->RenameToFree(target_)) aside = SetAside(target_);
        path_ = target_;
    }
    file_.reset();
    return aside;
}

void PartFile::Discard() {
    std::error_code none;
    // A file of this name that is another's by now stays.
    if (!IsInPlace() && file_ && file_->HasName()) std::filesystem::remove(path_, none);
    file_.reset();
    discarded_ = true;
}

std::string PartFile::Remains() const {
    const bool left = !discarded_ && !IsInPlace() && file_ && file_->HasName();
    return left ? path_ : std::string();
}

}  // namespace engine::asf
