// A system file descriptor that closes itself.
#pragma once

#include <unistd.h>

#include <utility>

namespace platform {

class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int number) : number_(number) {}
    FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() {
        if (number_ >= 0) ::close(number_);
    }

    int Number() const { return number_; }  // -1 = none
    bool IsOpen() const { return number_ >= 0; }
    /// Gives the number away: the caller closes it.
    int Release() { return std::exchange(number_, -1); }

  private:
    int number_ = -1;
};

/// Occupies those of the descriptors 0, 1 and 2 that the process was started without, so that no
/// file or socket gets such a number and then finds the program's output in itself. They go on
/// failing as closed ones do. Call it before anything is opened.
void OccupyStandardDescriptors();

}  // namespace platform
