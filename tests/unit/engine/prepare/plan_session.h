// A session on the object tree, and the plan that is made of it.
#pragma once

#include "engine/object_model/profile.h"
#include "engine/prepare/plan_maker.h"
#include "unit/engine/object_model/fake_engine.h"

namespace engine {

/// Has a group, a profile and an output; cases change it.
struct Session {
    Session() {
        test_support::FillProfile(profile);
        group = tree.groups.Add("SG_1");
        tree.file.SetLocalFileName("out.wmv");
        tree.auto_stop = true;
    }
    void OpenFilm(const std::string& path = "film.avi") { group->AutoSetFileSource(path); }
    platform::WMEncSource& Audio() { return *group->Source(platform::SourceType::Audio, 0); }
    platform::WMEncVideoSource& Video() {
        return *platform::AsVideo(group->Source(platform::SourceType::Video, 0));
    }
    platform::WMEncAudience& Audience() {
        audience = profile.Audience(0);
        return *audience;
    }
    EncodePlan Plan() {
        if (attach) group->SetProfile(profile);
        return MakePlan(tree.Record(), {*engine.files, engine.Parts().camera_format});
    }

    test_support::FakeEngine engine;
    SessionTree tree{std::make_shared<const EngineParts>(engine.Parts())};
    Profile profile;
    std::shared_ptr<platform::WMEncSourceGroup> group;
    std::shared_ptr<platform::WMEncAudience> audience;
    bool attach = true;
};

/// With a film of audio and video as its input.
struct FilmSession : Session {
    FilmSession() { OpenFilm(); }
};

/// Pixels with a palette, which no codec takes.
constexpr std::uint32_t kRgb8 = 0xE436EB7A;

}  // namespace engine
