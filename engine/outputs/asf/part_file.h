// A file that appears under its name when it is whole, and until then grows beside it.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "engine/outputs/asf/host_file.h"

namespace engine::asf {

/// Operations throw as HostFile's do; their errors tell the name that the file is to have. A file
/// that has this name already stays as it is until Publish. A link is followed, so that the file
/// that it leads to is replaced or made. A device is written in place; a FIFO is refused.
class PartFile {
  public:
    /// Makes the part anew. Refuses a name that may not be written to, and a part's name that
    /// something else has.
    explicit PartFile(const std::string& path);
    PartFile(const PartFile&) = delete;
    PartFile& operator=(const PartFile&) = delete;

    HostFile& File() { return *file_; }
    /// As HostFile's, and notices when the part or its folder was removed or exchanged.
    void Append(std::span<const std::uint8_t> bytes);
    /// Gives the file its name, atomically replacing one that has it. Nothing else may follow.
    void Publish();
    /// The same, but a file that has the name gets a free one beside it ("a.wmv" becomes
    /// "a-1.wmv"), which is returned; "" when none had it.
    std::string PublishBeside();
    /// Removes the part. Never fails; nothing else may follow.
    void Discard();

    /// Where the part stays, "" when nothing is left of it.
    std::string Remains() const;

  private:
    bool IsInPlace() const { return path_ == target_; }

    std::string target_;
    std::string path_;  // of the part
    std::optional<HostFile> file_;
    bool discarded_ = false;
};

}  // namespace engine::asf
