// A session for the rooms of the form: fakes around real rooms, without the form itself.
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "app/statistics_report.h"
#include "cli/encode_settings.h"
#include "platform/session_state.h"
#include "support/fake_host.h"

namespace app {

struct SessionFixture : testing::Test {
    void AddAudio() { session.g_objSrcAud = audio; }
    void AddVideo() { session.g_objSrcVid = video; }
    std::vector<std::string> WindowLog() { return std::exchange(window.log->lines, {}); }

    test_support::FakeWindow window;
    test_support::FakeFactory factory;
    std::shared_ptr<test_support::FakeEncoder> encoder =
        std::make_shared<test_support::FakeEncoder>(factory.log);
    std::shared_ptr<test_support::FakeAudioSource> audio =
        std::make_shared<test_support::FakeAudioSource>(factory.log);
    std::shared_ptr<test_support::FakeVideoSource> video =
        std::make_shared<test_support::FakeVideoSource>(factory.log);
    test_support::RecordingPane pane;
    platform::SessionState session;
    cli::EncodeSettings settings;
    WallTime now{std::chrono::seconds(1000)};
};

}  // namespace app
