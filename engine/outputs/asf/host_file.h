// A file that is written as it grows: nothing waits in a buffer of ours, and every failure names
// the file.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>

namespace engine::asf {

/// What may have a file's name before it is written.
enum class Before {
    Nothing,
    Part,    // or a container, or an empty file, which are emptied
    Device,  // which is written in place
};

class HostFile {
  public:
    /// Makes the file or takes what is there; its folder must exist. Follows no link and never
    /// waits. While the object lives no other HostFile of any process opens the same file. Every
    /// operation throws platform::Error (path not found, access denied, disk full, busy, file
    /// exists, unspecified).
    /// @param called  the name that errors tell
    HostFile(std::string path, std::string called, Before before);

    /// At the end. What a failed call has written of `bytes` stays until CutTo.
    void Append(std::span<const std::uint8_t> bytes);
    /// Over the first bytes, which exist. Needs no room on the disk.
    void Overwrite(std::span<const std::uint8_t> bytes);
    /// Drops what stands behind the first `bytes` bytes.
    void CutTo(std::uint64_t bytes);
    /// Returns when the content is on the disk; reports what the system could not write after all.
    void Sync();
    /// Whether its name still leads to the file. A folder that is removed takes its files along,
    /// one that is exchanged may hold another of this name, and the system says nothing of either
    /// to those who write.
    bool HasName() const;
    /// Throws (file not found, or path not found without the folder) unless HasName.
    void RequireName() const;
    /// The file's new name; one that is there is replaced. Requires the old one.
    void Rename(const std::string& path);
    /// The same, unless something has the new name: then nothing happens, and the answer is false.
    bool RenameToFree(const std::string& path);
    void SetPermissions(unsigned mode);

    const std::string& path() const { return path_; }

  private:
    struct Closer {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };
    bool Open(Before before);
    [[noreturn]] void RefuseForeign(const char* what) const;
    void RequirePart(int descriptor) const;

    std::string path_;
    std::string called_;
    std::unique_ptr<std::FILE, Closer> file_;
};

/// Throws the platform::Error of a system's error code: what cannot be written, why, what to do.
[[noreturn]] void FailToWrite(const std::string& called, int cause);

}  // namespace engine::asf
