#include "engine/object_model/encoder.h"

#include <utility>

#include <fmt/format.h>

#include "engine/outputs/asf/leftover_parts.h"
#include "engine/plan/value_ranges.h"

namespace engine {

Encoder::Encoder(platform::EventLoop& loop, EngineParts parts)
    : loop_(loop),
      parts_(std::make_shared<const EngineParts>(WithDevicesKept(std::move(parts)))),
      tree_(parts_),
      control_(std::make_shared<RunControl>(loop)),
      statistics_(control_) {}

Encoder::~Encoder() { control_->Close(); }

void Encoder::SetVideoPerformance(std::int32_t performance) {
    tree_.video_performance = InRange(ranges::kVideoPerformance, performance);
}

void Encoder::Load(const std::string& path) {
    throw platform::Error(platform::kNotImplemented,
                          fmt::format("The session file {} cannot be loaded: reading session files "
                                      "is not possible yet, set the session up with options",
                                      path));
}

void Encoder::Save(const std::string& path) {
    throw platform::Error(
        platform::kNotImplemented,
        fmt::format("The session cannot be saved as {}: writing session files is not possible yet",
                    path));
}

void Encoder::RefuseWhileRunning() const {
    if (question_ || control_->IsRunning())
        throw platform::Error(platform::kBusy, "The encoder is running: stop it first");
}

PrepareParts Encoder::PlanParts() const { return PlanParts(*parts_->files); }

PrepareParts Encoder::PlanParts(platform::FileSystem& files) const {
    return {files, parts_->camera_format, parts_->network ? parts_->network() : NetworkSettings()};
}

void Encoder::PrepareToEncode(bool force) {
    RefuseWhileRunning();
    if ((prepared_ || is_made_) && !force) return;
    prepared_.reset();
    if (std::exchange(is_made_, false)) control_->Forget();
    SessionRecord session = tree_.Record();
    EncodePlan plan = MakePlan(session, PlanParts());
    if (plan.LacksScreen()) plan = WithScreen(std::move(session), plan);
    // What was recorded before cannot be had again; what was encoded is encoded anew.
    if (plan.IsLive() && !plan.FilePath().empty()) SetLeftoverAside(plan.FilePath());
    notes_ = plan.FilePath().empty() ? std::vector<std::string>() : LeftoverNotes(plan.FilePath());
    const std::vector<std::string> notices = plan.notices;
    if (plan.IsLive()) {
        control_->Make(*parts_, std::move(plan));
        is_made_ = true;
    } else {
        prepared_ = std::move(plan);
    }
    for (const std::string& notice : notices) control_->DeliverNotice(notice);
}

void Encoder::CheckToEncode(platform::FileSystem& files) {
    MakePlan(tree_.Record(), PlanParts(files));
}

// The person is asked when all else is right.
EncodePlan Encoder::WithScreen(SessionRecord session, const EncodePlan& plan) {
    const CapturePlan& wanted = *plan.video->input.capture;
    const std::shared_ptr<ScreenShare> share = parts_->make_share();
    ScreenSize size;
    question_.emplace(loop_, *share);
    try {
        size = question_->Answer(wanted.area, wanted.rate);
    } catch (...) {
        question_.reset();
        throw;
    }
    question_.reset();
    session.groups.front().video.front().input.capture->screen_size = size;
    EncodePlan whole = MakePlan(session, PlanParts());
    whole.video->input.capture->share = share;
    return whole;
}

void Encoder::Stop() {
    if (question_) question_->Cancel();
    // What was opened to be recorded is given back.
    if (std::exchange(is_made_, false)) control_->Forget();
    control_->Stop();
}

platform::EncoderState Encoder::RunState() const {
    return question_ ? platform::EncoderState::Starting : control_->State();
}

void Encoder::Start() {
    if (control_->Resume()) return;
    PrepareToEncode(false);
    if (!std::exchange(is_made_, false)) {
        EncodePlan plan = std::move(*prepared_);
        prepared_.reset();
        control_->Make(*parts_, std::move(plan));
    }
    control_->Start();
}

std::vector<std::string> Encoder::TakeNotes() {
    std::vector<std::string> notes = std::exchange(notes_, {});
    for (std::string& note : control_->TakeNotes()) notes.push_back(std::move(note));
    return notes;
}

}  // namespace engine
