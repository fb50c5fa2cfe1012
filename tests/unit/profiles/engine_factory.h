// A host in memory whose profiles are those of the engine that is shipped.
#pragma once

#include "engine/object_model/engine_factory.h"
#include "support/fake_host.h"

namespace profiles {

class EngineFactory : public test_support::FakeFactory {
  public:
    std::shared_ptr<platform::WMEncProfile2> MakeProfile() override {
        return engine::MakeProfile(files);
    }
};

}  // namespace profiles
