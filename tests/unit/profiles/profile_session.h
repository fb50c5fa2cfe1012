// A session as it stands when its profile is set up: a file with sound and picture as input.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cli/encode_settings.h"
#include "platform/session_state.h"
#include "support/fake_encoder.h"
#include "support/fake_host.h"

namespace profiles {

struct ProfileSession {
    ProfileSession() {
        group->audio.push_back(std::make_shared<test_support::FakeAudioSource>(factory.log));
        group->video.push_back(std::make_shared<test_support::FakeVideoSource>(factory.log));
        state.g_objFSO = factory.files;
        state.g_objSrcGrp = group;
        state.g_objSrcAud = group->audio[0];
        state.g_objSrcVid = group->video[0];
        state.g_nContentType = platform::kContentAudioVideo;
        settings.input = "clip.avi";
    }

    /// A profile with one audience, for what is called below the profile set-up.
    test_support::FakeAudience& MakeAudience() {
        const auto made = std::make_shared<test_support::FakeProfile>(factory.log);
        made->AddAudience(10000000);
        state.g_objProfile = made;
        log().lines.clear();
        return *made->audiences[0];
    }
    test_support::FakeProfile& profile() {
        return dynamic_cast<test_support::FakeProfile&>(*state.g_objProfile);
    }
    test_support::FakeAudience& audience() { return *profile().audiences.at(0); }
    test_support::CallLog& log() { return *factory.log; }

    test_support::FakeFactory factory;
    std::shared_ptr<test_support::FakeSourceGroup> group =
        std::make_shared<test_support::FakeSourceGroup>(factory.log, "SG_1");
    platform::SessionState state;
    cli::EncodeSettings settings;
    test_support::RecordingPane pane;
};

using Lines = std::vector<std::string>;

}  // namespace profiles
