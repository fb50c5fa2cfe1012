// Audio and video sources: where a stream comes from, and which part of it is used.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "engine/object_model/engine_parts.h"
#include "engine/plan/source_record.h"
#include "engine/plan/value_ranges.h"

namespace engine {

/// Reads what a file holds. Throws Error when it cannot be opened.
SourceInput OpenFileInput(const EngineParts& parts, const std::string& path);

/// The same for a source that needs a stream of `type`, or the device of that medium ("device")
/// or the part of the screen ("screencap") with the name. Throws Error (invalid data) when the file
/// has no such stream; what CaptureOf throws.
SourceInput OpenInput(const EngineParts& parts, platform::SourceType type, const std::string& input,
                      const std::string& scheme, const std::string& area = {});

/// What audio and video sources have in common. A failed SetInput leaves the source without input.
template <typename Interface, typename Record>
class SourceBase : public Interface {
  public:
    explicit SourceBase(std::shared_ptr<const EngineParts> parts, Record state = {})
        : state_(std::move(state)), parts_(std::move(parts)) {}

    /// The source as it is set up now.
    const Record& State() const { return state_; }

    using Interface::SetInput;
    void SetInput(const std::string& input, const std::string& scheme) override {
        state_.input = SourceInput();
        state_.input = OpenInput(*parts_, this->Type(), input, scheme);
    }
    /// Opens an input that is only named. Throws what OpenInput throws.
    void OpenNamed() {
        const SourceInput& named = state_.input;
        if (named.LacksSource())
            state_.input = OpenInput(*parts_, this->Type(), named.input, named.scheme, named.area);
    }
    /// Takes an input that has been opened already.
    void TakeInput(const SourceInput& input) { state_.input = input; }

    std::string Input() const override { return state_.input.input; }
    std::string Scheme() const override { return state_.input.scheme; }
    std::int32_t MarkIn() const override { return state_.mark_in_ms; }
    void SetMarkIn(std::int32_t milliseconds) override {
        state_.mark_in_ms = InRange(ranges::kMarkIn, milliseconds);
    }
    std::int32_t MarkOut() const override { return state_.mark_out_ms; }
    void SetMarkOut(std::int32_t milliseconds) override {
        state_.mark_out_ms = InRange(ranges::kMarkOut, milliseconds);
    }
    std::int32_t PreProcessPass() const override { return state_.pre_process_pass; }
    void SetPreProcessPass(std::int32_t passes) override {
        state_.pre_process_pass = InRange(ranges::kPreProcessPass, passes);
    }

  protected:
    Record state_;

  private:
    std::shared_ptr<const EngineParts> parts_;
};

class AudioSource : public SourceBase<platform::WMEncAudioSource, AudioSourceRecord> {
  public:
    using SourceBase::SourceBase;
    std::int32_t Duration() const override;
    std::int32_t ContentMode() const override { return state_.content_mode; }
    void SetContentMode(std::int32_t mode) override;
    std::string ContentEDL() const override { return state_.content_edl; }
    void SetContentEDL(const std::string& file) override { state_.content_edl = file; }
    std::string CaptureDevice() const override {
        const std::optional<CaptureInput>& capture = state_.input.capture;
        return capture ? capture->device.name : std::string();
    }
};

class VideoSource : public SourceBase<platform::WMEncVideoSource, VideoSourceRecord> {
  public:
    using SourceBase::SourceBase;
    /// A still picture lasts as long as StillDuration says.
    std::int32_t Duration() const override;

    std::int32_t Optimization() const override { return state_.optimization; }
    void SetOptimization(std::int32_t optimization) override;
    std::uint32_t PixelFormat() const override { return state_.pixel_format; }
    void SetPixelFormat(std::uint32_t format) override { state_.pixel_format = format; }
    std::int32_t PixelAspectRatioX() const override { return state_.pixel_aspect_x; }
    void SetPixelAspectRatioX(std::int32_t x) override;
    std::int32_t PixelAspectRatioY() const override { return state_.pixel_aspect_y; }
    void SetPixelAspectRatioY(std::int32_t y) override;
    std::int32_t CroppingLeftMargin() const override { return state_.left_margin; }
    void SetCroppingLeftMargin(std::int32_t pixels) override;
    std::int32_t CroppingRightMargin() const override { return state_.right_margin; }
    void SetCroppingRightMargin(std::int32_t pixels) override;
    std::int32_t CroppingTopMargin() const override { return state_.top_margin; }
    void SetCroppingTopMargin(std::int32_t pixels) override;
    std::int32_t CroppingBottomMargin() const override { return state_.bottom_margin; }
    void SetCroppingBottomMargin(std::int32_t pixels) override;
    std::int32_t CaptureRate() const override { return state_.capture_rate; }
    void SetCaptureRate(std::int32_t thousandths) override;
    std::string CaptureArea() const override;
    std::int32_t StillDuration() const override { return state_.still_duration_ms; }
    void SetStillDuration(std::int32_t milliseconds) override;
};

}  // namespace engine
