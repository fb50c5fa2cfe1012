// A session on fakes: state, settings and pane as the form would hold them after Go.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "cli/encode_settings.h"
#include "platform/session_state.h"
#include "support/fake_encoder.h"
#include "support/fake_host.h"

using Lines = std::vector<std::string>;
using Change = std::function<void(cli::EncodeSettings&)>;
using Settings = cli::EncodeSettings;

/// Gives members their values: Set(&Settings::input, "a.avi", &Settings::silent, true).
inline Change Set() {
    return [](Settings&) {};
}
template <typename Member, typename Value, typename... Rest>
Change Set(Member Settings::*member, Value value, Rest... rest) {
    return [=](Settings& settings) {
        settings.*member = value;
        Set(rest...)(settings);
    };
}

struct Session {
    Session() {
        state.g_objFSO = factory.files;
        state.g_objEncoder = factory.MakeEncoder();
    }
    test_support::FakeEncoder& encoder() { return *factory.encoders.back(); }
    test_support::FakeFileSystem& files() { return *factory.files; }
    /// What was asked of the encoder since the last call, reads of sources left out.
    Lines TakeCalls() {
        Lines calls = std::exchange(factory.log->lines, {});
        std::erase_if(
            calls, [](const std::string& call) { return platform::StartsWith(call, "Source("); });
        return calls;
    }
    /// The session's group with sources of these kinds, as SetupInput leaves it.
    void AddSources(bool audio, bool video) {
        state.g_objSrcGrp = encoder().groups.Add("SG_1");
        if (audio)
            state.g_objSrcAud =
                platform::AsAudio(state.g_objSrcGrp->AddSource(platform::SourceType::Audio));
        if (video)
            state.g_objSrcVid =
                platform::AsVideo(state.g_objSrcGrp->AddSource(platform::SourceType::Video));
        TakeCalls();
    }

    test_support::FakeFactory factory;
    test_support::RecordingPane pane;
    platform::SessionState state;
    cli::EncodeSettings settings;
};
