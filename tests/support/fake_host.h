// A host without a machine: pane, window, event loop, files in memory, media information, shell,
// and the factory that hands them out.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "platform/factory.h"
#include "platform/output_pane.h"
#include "platform/text.h"
#include "platform/widgets.h"
#include "support/fake_encoder.h"

namespace test_support {

class RecordingPane : public platform::OutputPane {
  public:
    void OutputInfo(const std::string& text) override { lines.push_back(text); }
    /// All lines so far, and forgets them.
    std::vector<std::string> Take() { return std::exchange(lines, {}); }
    std::vector<std::string> lines;
};

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
    bool IsSame(const std::string& path, const std::string& other) override {
        const auto resolve = [this](const std::string& name) {
            const auto link = links.find(GetAbsolutePathName(name));
            return link == links.end() ? GetAbsolutePathName(name) : link->second;
        };
        const std::string first = resolve(path);
        return first == resolve(other) && (folders.contains(first) || files.contains(first));
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
    platform::SpecialFolder GetSpecialFolder(platform::SpecialFolderKind) override {
        return {"C:", "Windows"};
    }

    CallLogPtr log = std::make_shared<CallLog>();
    std::map<std::string, std::string> files;  // path to content
    std::set<std::string> folders;
    std::map<std::string, std::string> links;

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
};

class FakeMediaInfo : public platform::MediaInfo {
  public:
    explicit FakeMediaInfo(CallLogPtr shared_log) : log(std::move(shared_log)) {}
    void SetFileName(const std::string& path) override { log->Call("MediaInfo.FileName=", path); }
    double FrameRate() override { return frame_rate; }
    std::string Description() override {
        log->Call("MediaInfo.Description");
        return description;
    }
    CallLogPtr log;
    double frame_rate = 25.0;
    std::string description = "General\r\nFormat : AVI";
};

class FakeShell : public platform::Shell {
  public:
    explicit FakeShell(CallLogPtr shared_log) : log(std::move(shared_log)) {}
    void Run(const std::string& command, platform::WindowStyle style, bool wait) override {
        log->Call("Shell.Run", "(" + command + ", " + std::to_string(static_cast<int>(style)) +
                                   ", " + ValueText(wait) + ")");
    }
    CallLogPtr log;
};

/// Runs what was posted; when nothing is left but the condition does not hold, asks `on_idle` (the
/// user of the test) to do something.
class FakeEventLoop : public platform::EventLoop {
  public:
    void Post(std::function<void()> task) override { tasks.push_back(std::move(task)); }
    void RunUntil(const std::function<bool()>& done) override {
        while (!done()) {
            if (!tasks.empty()) {
                RunOne();
            } else if (on_idle) {
                on_idle();
            } else {
                throw std::logic_error("the loop would wait for ever");
            }
        }
    }
    void RunAll() {
        while (!tasks.empty()) RunOne();
    }

    std::deque<std::function<void()>> tasks;
    std::function<void()> on_idle;

  private:
    void RunOne() {
        const std::function<void()> task = std::move(tasks.front());
        tasks.pop_front();
        task();
    }
};

class FakeTextBox : public platform::TextBox {
  public:
    std::string Text() const override { return text; }
    void SetText(const std::string& new_text) override {
        text = new_text;
        scrolled = false;
    }
    void AppendText(const std::string& more) override {
        text += more;
        scrolled = false;
    }
    void ScrollToEnd() override { scrolled = true; }
    std::string text;
    bool scrolled = false;  // the end is in view
};

/// Notes each change in the window's log as "lblStatus=text".
template <typename Base>
class FakeCaption : public Base {
  public:
    FakeCaption(CallLogPtr shared_log, std::string control_name)
        : log(std::move(shared_log)), name(std::move(control_name)) {}
    std::string Caption() const override { return caption; }
    void SetCaption(const std::string& new_caption) override {
        log->Call(name, "=" + new_caption);
        caption = new_caption;
    }
    CallLogPtr log;
    std::string name, caption;
};

class FakeProgressBar : public platform::ProgressBar {
  public:
    explicit FakeProgressBar(CallLogPtr shared_log) : log(std::move(shared_log)) {}
    float Min() const override { return minimum; }
    void SetMin(float value) override { minimum = value; }
    float Max() const override { return maximum; }
    void SetMax(float value) override { maximum = value; }
    float Value() const override { return current; }
    void SetValue(float value) override {
        log->Call("pb1", "=" + platform::NumberText(value));
        current = value;
    }
    CallLogPtr log;
    float minimum = 0, maximum = 100, current = 0;
};

class FakeTimer : public platform::Timer {
  public:
    explicit FakeTimer(CallLogPtr shared_log) : log(std::move(shared_log)) {}
    int Interval() const override { return interval; }
    void SetInterval(int milliseconds) override {
        log->Call("Timer1.Interval", "=" + std::to_string(milliseconds));
        interval = milliseconds;
    }
    bool Enabled() const override { return enabled; }
    void SetEnabled(bool on) override {
        log->Call("Timer1.Enabled", "=" + ValueText(on));
        enabled = on;
    }
    CallLogPtr log;
    int interval = 0;
    bool enabled = false;
};

class FakeWindow : public platform::FormWindow {
  public:
    platform::TextBox& txtCmd() override { return command_box; }
    platform::TextBox& txtInfo() override { return info; }
    platform::Button& cmdGo() override { return go; }
    platform::Button& cmdStop() override { return stop; }
    platform::ProgressBar& pb1() override { return bar; }
    platform::Label& lblStatus() override { return status; }
    platform::Label& lblFile() override { return file; }
    platform::Label& lblETm() override { return media_length; }
    platform::Label& lblprgs() override { return percent; }
    platform::Label& Label1() override { return label1; }
    platform::Label& Label2() override { return label2; }
    platform::Label& Label3() override { return label3; }
    platform::Timer& Timer1() override { return timer; }
    void SetCaption(const std::string& text) override { caption = text; }
    void SetMousePointer(platform::MousePointer pointer) override {
        log->Call("MousePointer", "=" + std::to_string(static_cast<int>(pointer)));
    }
    void Beep() override { log->Call("Beep"); }
    void MessageBox(const std::string& text, const std::string& title,
                    platform::MessageIcon icon) override {
        log->Call("MessageBox",
                  "(" + text + ", " + title + ", " + std::to_string(static_cast<int>(icon)) + ")");
    }
    std::string Arguments() const override { return arguments; }
    platform::EventLoop& Loop() override { return loop; }

    /// The pane's lines so far.
    std::vector<std::string> PaneLines() const {
        std::vector<std::string> lines;
        std::string rest = info.text;
        for (std::size_t end = rest.find("\r\n"); end != std::string::npos;
             end = rest.find("\r\n")) {
            lines.push_back(rest.substr(0, end));
            rest.erase(0, end + 2);
        }
        return lines;
    }

    CallLogPtr log = std::make_shared<CallLog>();
    FakeTextBox command_box, info;
    FakeCaption<platform::Button> go{log, "cmdGo"}, stop{log, "cmdStop"};
    FakeProgressBar bar{log};
    FakeCaption<platform::Label> status{log, "lblStatus"}, file{log, "lblFile"},
        media_length{log, "lblETm"}, percent{log, "lblprgs"}, label1{log, "Label1"},
        label2{log, "Label2"}, label3{log, "Label3"};
    FakeTimer timer{log};
    FakeEventLoop loop;
    std::string caption, arguments;
};

/// Hands out new encoders and profiles that share `log`, and always the same file system and media
/// information. `on_encoder` readies each new encoder.
class FakeFactory : public platform::Factory {
  public:
    std::shared_ptr<platform::WMEncoder> MakeEncoder() override {
        encoders.push_back(std::make_shared<FakeEncoder>(log));
        if (on_encoder) on_encoder(*encoders.back());
        return encoders.back();
    }
    std::shared_ptr<platform::WMEncProfile2> MakeProfile() override {
        profiles.push_back(std::make_shared<FakeProfile>(log));
        if (on_profile) on_profile(*profiles.back());
        return profiles.back();
    }
    std::shared_ptr<platform::FileSystem> MakeFileSystem() override { return files; }
    std::shared_ptr<platform::MediaInfo> MakeMediaInfo() override { return media_info; }
    std::shared_ptr<platform::Shell> MakeShell() override { return shell; }

    CallLogPtr log = std::make_shared<CallLog>();
    std::shared_ptr<FakeFileSystem> files = std::make_shared<FakeFileSystem>();
    std::shared_ptr<FakeMediaInfo> media_info = std::make_shared<FakeMediaInfo>(log);
    std::shared_ptr<FakeShell> shell = std::make_shared<FakeShell>(log);
    std::vector<std::shared_ptr<FakeEncoder>> encoders;
    std::vector<std::shared_ptr<FakeProfile>> profiles;
    std::function<void(FakeEncoder&)> on_encoder;
    std::function<void(FakeProfile&)> on_profile;
};

}  // namespace test_support
