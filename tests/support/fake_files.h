// Files and folders in memory.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/error.h"
#include "platform/file_system.h"
#include "support/call_log.h"

namespace test_support {

/// Files and folders in memory, with "/" as separator and "/home/" before relative names. Folders
/// list in the order in which their items were added.
class FakeFileSystem : public platform::FileSystem {
  public:
    FakeFileSystem() { AddFolder("/home"); }

    /// Adds missing parents too.
    void AddFolder(const std::string& path) {
        if (path.empty() || folders.contains(path)) return;
        if (path != "/") AddFolder(GetParentFolderName(path));
        folders.insert(path);
        folder_order.push_back(path);
    }
    void AddFile(const std::string& path, const std::string& content = "") {
        AddFolder(GetParentFolderName(path));
        if (!files.contains(path)) file_order.push_back(path);
        files[path] = content;
    }

    std::string Separator() const override { return "/"; }
    std::string GetAbsolutePathName(const std::string& path) override {
        if (path.empty()) return "/home";
        if (path.substr(0, 2) == "./") return "/home/" + path.substr(2);
        return path.front() == '/' ? path : "/home/" + path;
    }
    std::string GetParentFolderName(const std::string& path) override {
        const std::size_t slash = path.rfind('/');
        if (slash == std::string::npos) return "";
        return slash == 0 ? (path == "/" ? "" : "/") : path.substr(0, slash);
    }
    std::string GetBaseName(const std::string& path) override {
        const std::string name = Name(path);
        const std::size_t dot = name.rfind('.');
        return dot == std::string::npos ? name : name.substr(0, dot);
    }
    std::string GetExtensionName(const std::string& path) override {
        const std::string name = Name(path);
        const std::size_t dot = name.rfind('.');
        return dot == std::string::npos ? "" : name.substr(dot + 1);
    }
    bool FolderExists(const std::string& path) override {
        return folders.contains(GetAbsolutePathName(path));
    }
    bool FileExists(const std::string& path) override {
        return files.contains(GetAbsolutePathName(path));
    }
    void CreateFolder(const std::string& path) override {
        log->Call("CreateFolder", "(" + path + ")");
        const std::string full = GetAbsolutePathName(path);
        if (folders.contains(full) || files.contains(full))
            throw platform::Error(platform::kFileExists, full + " exists");
        if (!folders.contains(GetParentFolderName(full)))
            throw platform::Error(platform::kPathNotFound, full + ": its folder does not exist");
        AddFolder(full);
    }
    platform::Folder GetFolder(const std::string& path) override {
        const std::string full = GetAbsolutePathName(path);
        log->Call("GetFolder", "(" + full + ")");
        if (!folders.contains(full))
            throw platform::Error(platform::kPathNotFound, full + " does not exist");
        platform::Folder folder{full, {}, {}};
        for (const std::string& each : file_order)
            if (GetParentFolderName(each) == full) folder.files.push_back(Name(each));
        for (const std::string& each : folder_order)
            if (each != "/" && GetParentFolderName(each) == full)
                folder.sub_folders.push_back(Name(each));
        return folder;
    }
    /// `links` (path to target) are followed, whole paths only.
    std::optional<platform::FileIdentity> Identify(const std::string& path) override {
        const std::string full = GetAbsolutePathName(path);
        const auto link = links.find(full);
        const std::string& target = link == links.end() ? full : link->second;
        if (!folders.contains(target) && !files.contains(target)) return std::nullopt;
        return platform::FileIdentity{
            1, identities.try_emplace(target, identities.size()).first->second};
    }
    bool IsSpecialFile(const std::string& path) override {
        return special_files.contains(GetAbsolutePathName(path));
    }
    std::shared_ptr<platform::TextStream> OpenTextFile(const std::string& path,
                                                       platform::OpenMode mode,
                                                       bool create) override {
        const std::string full = GetAbsolutePathName(path);
        log->Call("OpenTextFile", "(" + full + ")");
        if (mode == platform::OpenMode::Writing) {
            if (!folders.contains(GetParentFolderName(full)))
                throw platform::Error(platform::kPathNotFound, full + ": no such folder");
            if (!create && !files.contains(full))
                throw platform::Error(platform::kFileNotFound, full + " does not exist");
            AddFile(full);
            files[full].clear();
        } else if (!files.contains(full)) {
            throw platform::Error(platform::kFileNotFound, full + " does not exist");
        }
        return std::make_shared<Stream>(files[full]);
    }
    std::string ReadBytes(const std::string& path, std::size_t most) override {
        const std::string full = GetAbsolutePathName(path);
        if (!files.contains(full))
            throw platform::Error(platform::kFileNotFound, full + " does not exist");
        if (files[full].size() > most)
            throw platform::Error(platform::kInvalidData, full + " is too large");
        return files[full];
    }
    void WriteBytes(const std::string& path, const std::string& bytes) override {
        const std::string full = GetAbsolutePathName(path);
        if (!folders.contains(GetParentFolderName(full)))
            throw platform::Error(platform::kPathNotFound, full + ": no such folder");
        AddFile(full, bytes);
    }
    platform::SpecialFolder GetSpecialFolder(platform::SpecialFolderKind) override {
        return {"C:", "Windows"};
    }

    CallLogPtr log = std::make_shared<CallLog>();
    std::map<std::string, std::string> files;  // path to content
    std::set<std::string> folders;
    std::map<std::string, std::string> links;
    std::set<std::string> special_files;  // those of `files` that are none

  private:
    class Stream : public platform::TextStream {
      public:
        explicit Stream(std::string& content) : content_(content) {}
        std::string ReadLine() override {
            if (position_ >= content_.size())
                throw platform::Error(platform::kInvalidData, "no further line");
            const std::size_t end = content_.find('\n', position_);
            std::string line = content_.substr(position_, end - position_);
            position_ = end == std::string::npos ? content_.size() : end + 1;
            if (!line.empty() && line.back() == '\r') line.pop_back();
            return line;
        }
        void Write(const std::string& text) override { content_ += text; }
        void Close() override {}

      private:
        std::string& content_;
        std::size_t position_ = 0;
    };
    static std::string Name(const std::string& path) { return path.substr(path.rfind('/') + 1); }

    std::vector<std::string> file_order, folder_order;
    std::map<std::string, std::uint64_t> identities;  // of what was asked for
};

}  // namespace test_support
