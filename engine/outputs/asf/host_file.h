// A file that is written as it grows: nothing waits in a buffer of ours, and every failure names
// the file.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>

namespace engine::asf {

class HostFile {
  public:
    /// Makes the file, or empties the one that is there; its folder must exist. Every operation
    /// throws platform::Error (path not found, access denied, disk full, unspecified).
    explicit HostFile(std::string path);

    /// At the end. What a failed call has written of `bytes` stays until CutTo.
    void Append(std::span<const std::uint8_t> bytes);
    /// Over the first bytes, which exist. Needs no room on the disk.
    void Overwrite(std::span<const std::uint8_t> bytes);
    /// Drops what stands behind the first `bytes` bytes.
    void CutTo(std::uint64_t bytes);
    void Close();

  private:
    struct Closer {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };
    [[noreturn]] void Fail(int cause) const;

    std::string path_;
    std::unique_ptr<std::FILE, Closer> file_;
};

}  // namespace engine::asf
