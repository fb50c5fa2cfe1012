#include "engine/object_model/encoder.h"

#include <utility>

#include <fmt/format.h>

#include "engine/files/file_text.h"
#include "engine/files/session_file.h"
#include "engine/object_model/screen_question.h"
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
    RefuseWhileRunning();
    platform::FileSystem& host = *parts_->files;
    const std::string bytes = host.ReadBytes(path, files::kMostSessionBytes);
    try {
        files::SessionFile file =
            files::ReadSession(files::DecodeText(bytes), files::SessionFolder(host, path));
        tree_.TakeOver(file.session);
        session_text_ = std::move(file.text);
        notes_ = std::move(file.notes);
    } catch (const platform::Error& error) {
        throw platform::Error(error.unsigned_number(),
                              fmt::format("The session file {} cannot be loaded: {}",
                                          host.GetAbsolutePathName(path), error.description()));
    }
}

void Encoder::Save(const std::string& path) {
    platform::FileSystem& host = *parts_->files;
    host.WriteBytes(path,
                    files::EncodeText(files::WriteSession(
                        tree_.Record(), files::SessionFolder(host, path), session_text_.get())));
}

void Encoder::RefuseWhileRunning() const {
    if (cancel_question_ || control_->IsRunning())
        throw platform::Error(platform::kBusy, "The encoder is running: stop it first");
}

PrepareParts Encoder::PlanParts() { return PlanParts(*parts_->files); }

PrepareParts Encoder::PlanParts(platform::FileSystem& files) {
    PrepareParts parts{files, parts_->camera_format};
    if (parts_->network) parts.network = parts_->network();
    parts.network.ask_push_user = [this](const platform::CredentialsQuestion& question) {
        return AskCredentials(question);
    };
    return parts;
}

void Encoder::PrepareToEncode(bool force) {
    RefuseWhileRunning();
    if ((prepared_ || is_made_) && !force) return;
    prepared_.reset();
    if (std::exchange(is_made_, false)) control_->Forget();
    SessionRecord session = OpenedSession();
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
    MakePlan(OpenedSession(), PlanParts(files));
}

SessionRecord Encoder::OpenedSession() {
    tree_.groups.OpenNamed();
    return tree_.Record();
}

// The loop runs meanwhile: whoever stops the encoder then cancels the question.
template <typename Question>
auto Encoder::Asking(std::function<void()> cancel, Question&& ask) {
    cancel_question_ = std::move(cancel);
    try {
        auto answer = ask();
        cancel_question_ = nullptr;
        return answer;
    } catch (...) {
        cancel_question_ = nullptr;
        throw;
    }
}

// The person is asked when all else is right.
EncodePlan Encoder::WithScreen(SessionRecord session, const EncodePlan& plan) {
    const CapturePlan& wanted = *plan.video->input.capture;
    const std::shared_ptr<ScreenShare> share = parts_->make_share();
    const ScreenSize size =
        Asking([&] { share->Cancel(); }, [&] { return AskForScreen(loop_, *share, wanted); });
    session.groups.front().video.front().input.capture->screen_size = size;
    EncodePlan whole = MakePlan(session, PlanParts());
    whole.video->input.capture->share = share;
    return whole;
}

platform::CredentialsAnswer Encoder::AskCredentials(platform::CredentialsQuestion question) {
    bool wanted = true;
    question.wanted = [&] { return wanted; };
    return Asking([&] { wanted = false; }, [&] { return control_->AskCredentials(question); });
}

void Encoder::Stop() {
    if (cancel_question_) cancel_question_();
    // What was opened to be recorded is given back.
    if (std::exchange(is_made_, false)) control_->Forget();
    control_->Stop();
}

platform::EncoderState Encoder::RunState() const {
    return cancel_question_ ? platform::EncoderState::Starting : control_->State();
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
