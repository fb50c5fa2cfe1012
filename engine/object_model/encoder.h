// The encoder object: the tree, the plan that prepare makes of it, and the run.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "engine/object_model/run_control.h"
#include "engine/object_model/session_tree.h"
#include "engine/object_model/statistics.h"
#include "engine/prepare/plan_maker.h"
#include "platform/event_loop.h"

namespace engine {

/// Changes to the tree count from the next prepare on; a run goes by the plan it was started with.
/// Destruction stops a run gracefully and waits until its file is whole.
class Encoder : public platform::WMEncoder {
  public:
    /// The loop must outlive the encoder.
    Encoder(platform::EventLoop& loop, EngineParts parts);
    ~Encoder() override;
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    platform::WMEncSourceGroupCollection& SourceGroupCollection() override { return tree_.groups; }
    platform::WMEncFile& File() override { return tree_.file; }
    platform::WMEncBroadcast& Broadcast() override { return tree_.broadcast; }
    platform::WMEncDisplayInfo& DisplayInfo() override { return tree_.display; }
    platform::WMEncAttributes& Attributes() override { return tree_.attributes; }
    platform::WMEncStatistics& Statistics() override { return statistics_; }
    platform::WMEncSourcePluginInfoManager& SourcePluginInfoManager() override {
        return tree_.plugins;
    }

    bool AutoStop() const override { return tree_.auto_stop; }
    void SetAutoStop(bool on) override { tree_.auto_stop = on; }
    std::int32_t VideoPerformance() const override { return tree_.video_performance; }
    void SetVideoPerformance(std::int32_t performance) override;

    /// Throws Error (busy) while a run goes on.
    void Load(const std::string& path) override;
    void Save(const std::string& path) override;

    /// Throws what MakePlan throws, and Error (busy) while a run goes on. What is to be recorded is
    /// opened here, so that a device that cannot be had is said before anything is written. A
    /// desktop that hands out its screen asks the person first; until the answer is there, the loop
    /// runs, the state is Starting, and Stop ends it with an Error.
    void PrepareToEncode(bool force) override;
    void CheckToEncode(platform::FileSystem& files) override;
    std::vector<std::string> TakeNotes() override;
    /// Uses up what was prepared: the start after a run prepares anew. Throws Error (busy) while a
    /// run goes on that is not paused, and what opening inputs, encoders and the output throws. A
    /// server may want to know who pushes: the person is asked as above.
    void Start() override;
    void Stop() override;
    void Pause() override { control_->Pause(); }
    platform::EncoderState RunState() const override;
    void SetEvents(platform::WMEncoderEvents* events) override { control_->SetEvents(events); }

  private:
    void RefuseWhileRunning() const;
    SessionRecord OpenedSession();
    PrepareParts PlanParts();
    PrepareParts PlanParts(platform::FileSystem& files);
    EncodePlan WithScreen(SessionRecord session, const EncodePlan& plan);
    platform::CredentialsAnswer AskCredentials(platform::CredentialsQuestion question);
    template <typename Question>
    auto Asking(std::function<void()> cancel, Question&& ask);

    platform::EventLoop& loop_;
    std::shared_ptr<const EngineParts> parts_;
    SessionTree tree_;
    std::optional<EncodePlan> prepared_;  // not yet made into a run
    bool is_made_ = false;                // the run stands ready
    std::vector<std::string> notes_;
    std::shared_ptr<const std::string> session_text_;  // of the file that was loaded
    std::function<void()> cancel_question_;            // while the person is asked; else empty
    std::shared_ptr<RunControl> control_;
    engine::Statistics statistics_;
};

}  // namespace engine
