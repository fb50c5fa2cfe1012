// The file-system object: names, folders and text files as the command language sees them.
//
// Names may come from another system: a POSIX host takes "\" and "/" as separators and maps a drive
// ("C:\ZELMO\cap1.wmv") below the user's home; a file:// URI is a name too. Every operation that
// takes a path accepts all these spellings; every path that it returns is the host's own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace platform {

enum class OpenMode { Reading = 1, Writing = 2 };
enum class SpecialFolderKind { Windows = 0, System = 1, Temporary = 2 };

/// A text file in the locale's encoding. Closing twice is harmless; destruction closes.
class TextStream {
  public:
    virtual ~TextStream() = default;
    /// One line as UTF-8 without its end (LF or CRLF). Throws Error when there is no further line.
    virtual std::string ReadLine() = 0;
    virtual void Write(const std::string& text) = 0;
    virtual void Close() = 0;
};

/// A folder's direct content, in the order in which the file system lists it.
struct Folder {
    std::string path;
    std::vector<std::string> files;        // names, not paths
    std::vector<std::string> sub_folders;  // names, not paths
};

struct SpecialFolder {
    std::string drive;  // "C:"
    std::string name;   // "Windows"
};

/// The same for all names of one file or folder, and for no other.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t number = 0;
    bool operator==(const FileIdentity&) const = default;
    friend bool operator<(const FileIdentity& a, const FileIdentity& b) {
        return std::tie(a.device, a.number) < std::tie(b.device, b.number);
    }
};

class FileSystem {
  public:
    virtual ~FileSystem() = default;

    virtual std::string Separator() const = 0;
    /// The complete host path of `path`; it need not exist. Never fails.
    virtual std::string GetAbsolutePathName(const std::string& path) = 0;
    /// A name that leads to just the host's own `path` (absolute), also while that does not exist:
    /// for names that come from a listing and may hold what separates in a typed one.
    virtual std::string NameOf(const std::string& path) { return path; }
    /// Everything before the last component ("" for a root).
    virtual std::string GetParentFolderName(const std::string& path) = 0;
    /// Last component without its extension ("x.y.avi" gives "x.y").
    virtual std::string GetBaseName(const std::string& path) = 0;
    /// Text after the last "." of the last component, without the dot; "" when there is none.
    virtual std::string GetExtensionName(const std::string& path) = 0;
    virtual bool FolderExists(const std::string& path) = 0;
    virtual bool FileExists(const std::string& path) = 0;
    /// Makes one folder; its parent must exist. Throws Error (access denied, path not found, file
    /// exists).
    virtual void CreateFolder(const std::string& path) = 0;
    /// Throws Error (path not found, access denied).
    virtual Folder GetFolder(const std::string& path) = 0;
    /// What the name leads to, links followed; nothing when that does not exist.
    virtual std::optional<FileIdentity> Identify(const std::string& path) = 0;
    /// Whether both names lead to the same existing file or folder, links followed.
    bool IsSame(const std::string& path, const std::string& other) {
        const std::optional<FileIdentity> identity = Identify(path);
        return identity && identity == Identify(other);
    }
    /// Whether the name leads to what is neither file nor folder: a pipe, a socket, a device.
    virtual bool IsSpecialFile(const std::string& path) = 0;
    /// Never waits. Writing replaces the content. Throws Error (file not found, path not found,
    /// access denied, invalid argument for a pipe or a socket).
    virtual std::shared_ptr<TextStream> OpenTextFile(const std::string& path, OpenMode mode,
                                                     bool create) = 0;
    /// All bytes of a file. Never waits. Throws Error (file not found, path not found, access
    /// denied, invalid argument for what is no ordinary file, invalid data for more than `most`
    /// bytes).
    virtual std::string ReadBytes(const std::string& path, std::size_t most) = 0;
    /// Writes a whole file in the place of one that is there. Throws Error (path not found, access
    /// denied, disk full, invalid argument for what is no ordinary file); what was there is then as
    /// it was.
    virtual void WriteBytes(const std::string& path, const std::string& bytes) = 0;
    virtual SpecialFolder GetSpecialFolder(SpecialFolderKind kind) = 0;
};

}  // namespace platform
