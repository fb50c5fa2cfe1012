// A file that is inspected and repaired, read through the one descriptor that was opened.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "platform/posix/file_descriptor.h"

namespace engine::asf {

/// Errors are platform::Error and say that the file cannot be repaired.
class InputFile {
  public:
    /// Never waits, follows no link of this name, and refuses what is no regular file.
    explicit InputFile(std::string path);

    /// Keeps runs and other repairs off the file while the object lives; busy when one has it.
    /// Where there are no locks, nothing is held.
    void Lock() const;
    /// All of `bytes`, which the file has.
    void Read(std::uint64_t place, std::span<std::uint8_t> bytes) const;
    /// Whether the name still leads to this file.
    bool HasName() const;

    const std::string& path() const { return path_; }
    std::uint64_t Bytes() const { return bytes_; }  // when it was opened
    unsigned Permissions() const { return permissions_; }

  private:
    std::string path_;
    platform::FileDescriptor descriptor_;
    std::uint64_t bytes_ = 0;
    unsigned permissions_ = 0;
};

}  // namespace engine::asf
