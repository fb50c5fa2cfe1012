#include "engine/object_model/encoder.h"

#include <utility>

#include <fmt/format.h>

#include "engine/object_model/value_checks.h"
#include "engine/outputs/leftover_parts.h"
#include "engine/plan/plan_maker.h"

namespace engine {

Encoder::Encoder(platform::EventLoop& loop, EngineParts parts)
    : parts_(std::make_shared<const EngineParts>(WithDevicesKept(std::move(parts)))),
      tree_(parts_),
      control_(std::make_shared<RunControl>(loop)),
      statistics_(control_) {}

Encoder::~Encoder() { control_->Close(); }

void Encoder::SetVideoPerformance(std::int32_t performance) {
    tree_.video_performance = InRange("VideoPerformance", performance, 0, 100);
}

void Encoder::Load(const std::string& path) {
    throw platform::Error(platform::kNotImplemented,
                          fmt::format("The session file {} cannot be loaded: reading session files "
                                      "is not possible yet, set the session up with options",
                                      path));
}

void Encoder::RefuseWhileRunning() const {
    if (control_->IsRunning())
        throw platform::Error(platform::kBusy, "The encoder is running: stop it first");
}

void Encoder::PrepareToEncode(bool force) {
    RefuseWhileRunning();
    if ((prepared_ || is_made_) && !force) return;
    prepared_.reset();
    if (std::exchange(is_made_, false)) control_->Forget();
    EncodePlan plan = MakePlan(tree_, *parts_->files);
    // What was recorded before cannot be had again; what was encoded is encoded anew.
    if (plan.IsLive()) SetLeftoverAside(plan.output_path);
    notes_ = LeftoverNotes(plan.output_path);
    if (plan.IsLive()) {
        control_->Make(*parts_, std::move(plan));
        is_made_ = true;
    } else {
        prepared_ = std::move(plan);
    }
}

void Encoder::Start() {
    PrepareToEncode(false);
    if (!std::exchange(is_made_, false)) {
        EncodePlan plan = std::move(*prepared_);
        prepared_.reset();
        control_->Make(*parts_, std::move(plan));
    }
    control_->Start();
}

}  // namespace engine
