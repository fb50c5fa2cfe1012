// A parser on a host in memory.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cli/parameter_parser.h"
#include "platform/text.h"
#include "support/fake_host.h"

namespace cli_tests {

/// Notes what was asked for; makes folders in the file system given.
class RecordingActions : public cli::CommandActions {
  public:
    explicit RecordingActions(test_support::FakeFileSystem& files) : files_(files) {}
    void ListDevices() override { calls.push_back("ListDevices"); }
    void ListAudioCodecs() override { calls.push_back("ListAudioCodecs"); }
    void ListAudioFormats() override { calls.push_back("ListAudioFormats"); }
    void ListVideoCodecs() override { calls.push_back("ListVideoCodecs"); }
    void ShowHelp() override { calls.push_back("ShowHelp"); }
    void ShowHelpChm() override { calls.push_back("ShowHelpChm"); }
    void PrintFileInfo() override { calls.push_back("PrintFileInfo"); }
    void CreateOutputFolder(const std::string& path) override {
        calls.push_back("CreateOutputFolder " + path);
        files_.AddFolder(path);
    }
    std::vector<std::string> calls;

  private:
    test_support::FakeFileSystem& files_;
};

/// One window's parser; `Run` is a press of Go with this command text.
struct ParserBench {
    ParserBench() { state.g_objFSO = files; }

    bool Run(const std::string& command) {
        return parser.ParseParameters(platform::Split(command, ' '));
    }

    std::shared_ptr<test_support::FakeFileSystem> files =
        std::make_shared<test_support::FakeFileSystem>();
    platform::SessionState state;
    test_support::RecordingPane pane;
    RecordingActions actions{*files};
    cli::EncodeSettings settings;
    cli::ValueReaders readers{pane};
    cli::ParameterParser parser{settings, readers, pane, actions, state};
};

using Lines = std::vector<std::string>;

}  // namespace cli_tests
