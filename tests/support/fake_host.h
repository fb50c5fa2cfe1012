// A host without a machine: pane, media information, shell, and the factory that hands them out
// together with files and encoders.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/factory.h"
#include "platform/output_pane.h"
#include "support/fake_encoder.h"
#include "support/fake_files.h"
#include "support/fake_window.h"

namespace test_support {

class RecordingPane : public platform::OutputPane {
  public:
    void OutputInfo(const std::string& text) override { lines.push_back(text); }
    /// All lines so far, and forgets them.
    std::vector<std::string> Take() { return std::exchange(lines, {}); }
    std::vector<std::string> lines;
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
