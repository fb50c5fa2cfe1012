// A parser on a host in memory, and its settings as text.
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

/// Every field that is not as a new record has it, as "name=value " in the record's order.
inline std::string Given(const cli::EncodeSettings& settings) {
    const auto fields = [](const cli::EncodeSettings& s) {
        const auto number = [](auto value) { return platform::NumberText(value); };
        const auto flag = [](bool value) { return std::string(value ? "true" : "false"); };
        return std::vector<std::pair<std::string, std::string>>{
            {"input", s.input},
            {"output", s.output},
            {"outputstring", s.outputstring},
            {"wme", s.wme},
            {"adevice", number(s.adevice)},
            {"vdevice", number(s.vdevice)},
            {"audioonly", flag(s.audioonly)},
            {"videoonly", flag(s.videoonly)},
            {"broadcast", number(s.broadcast)},
            {"push.server_name", s.push.server_name},
            {"push.publishing_point", s.push.publishing_point},
            {"push.template", s.push.template_name},
            {"time.start", number(s.time.start)},
            {"time.end", number(s.time.end)},
            {"duration", number(s.duration)},
            {"silent", flag(s.silent)},
            {"verbose", number(s.verbose)},
            {"title", s.title},
            {"author", s.author},
            {"copyright", s.copyright},
            {"description", s.description},
            {"rating", s.rating},
            {"profile", s.profile},
            {"loadprofile", s.loadprofile},
            {"saveprofile", s.saveprofile},
            {"maxpacket", number(s.maxpacket)},
            {"minpacket", number(s.minpacket)},
            {"a_codec", s.a_codec},
            {"a_mode", number(s.a_mode)},
            {"a_setting", s.a_setting},
            {"a_peakbitrate", number(s.a_peakbitrate)},
            {"a_peakbuffer", number(s.a_peakbuffer)},
            {"a_content", number(s.a_content)},
            {"a_contentedl", s.a_contentedl},
            {"surround", number(s.a_folddown6to2.surround)},
            {"center", number(s.a_folddown6to2.center)},
            {"lfe", number(s.a_folddown6to2.lfe)},
            {"v_codec", s.v_codec},
            {"v_mode", number(s.v_mode)},
            {"v_bitrate", number(s.v_bitrate)},
            {"v_buffer", number(s.v_buffer)},
            {"v_width", number(s.v_width)},
            {"v_height", number(s.v_height)},
            {"v_framerate", number(s.v_framerate)},
            {"v_keydist", number(s.v_keydist)},
            {"v_quality", number(s.v_quality)},
            {"v_peakbitrate", number(s.v_peakbitrate)},
            {"v_peakbuffer", number(s.v_peakbuffer)},
            {"v_performance", number(s.v_performance)},
            {"v_preproc", number(s.v_preproc)},
            {"pixelformat", s.pixelformat},
            {"x", number(s.pixelratio.x)},
            {"y", number(s.pixelratio.y)},
            {"left", number(s.v_clip.left)},
            {"top", number(s.v_clip.top)},
            {"right", number(s.v_clip.right)},
            {"bottom", number(s.v_clip.bottom)},
            {"v_profile", s.v_profile},
            {"device_input", flag(s.device_input)},
            {"duration_typed", flag(s.duration_typed)},
        };
    };
    const auto unset = fields(cli::EncodeSettings{});
    const auto now = fields(settings);
    std::string text;
    for (std::size_t i = 0; i < now.size(); ++i)
        if (now[i] != unset[i]) text += now[i].first + "=" + now[i].second + " ";
    return text;
}

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
