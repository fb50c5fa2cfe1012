// Audio and video sources: where a stream comes from, and which part of it is used.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "engine/object_model/engine_parts.h"
#include "engine/object_model/value_checks.h"

namespace engine {

/// A device or a screen that a source records.
struct CaptureInput {
    Device device;
    ScreenArea area;         // of a screen
    ScreenSize screen_size;  // when the input was given; 0 x 0 until the desktop hands it out
};

/// Where a source reads from: a file or a capture.
struct SourceInput {
    std::string input;      // as it was given
    std::string scheme;     // "" = a file
    std::string host_path;  // of a file
    std::optional<MediaFileInfo> media;
    std::optional<CaptureInput> capture;

    bool IsSet() const { return !input.empty(); }
    bool IsFile() const { return media.has_value(); }
};

/// Reads what a file holds. Throws Error when it cannot be opened.
SourceInput OpenFileInput(const EngineParts& parts, const std::string& path);

/// The same for a source that needs a stream of `type`, or the device of that medium ("device")
/// or the part of the screen ("screencap") with the name. Throws Error (invalid data) when the file
/// has no such stream; what CaptureOf throws.
SourceInput OpenInput(const EngineParts& parts, platform::SourceType type, const std::string& input,
                      const std::string& scheme);

/// What audio and video sources have in common. A failed SetInput leaves the source without input.
template <typename Interface>
class SourceBase : public Interface {
  public:
    explicit SourceBase(std::shared_ptr<const EngineParts> parts) : parts_(std::move(parts)) {}

    using Interface::SetInput;
    void SetInput(const std::string& input, const std::string& scheme) override {
        input_ = SourceInput();
        input_ = OpenInput(*parts_, this->Type(), input, scheme);
    }
    /// Takes an input that has been opened already.
    void TakeInput(const SourceInput& input) { input_ = input; }
    const SourceInput& Opened() const { return input_; }
    const EngineParts& Parts() const { return *parts_; }

    std::string Input() const override { return input_.input; }
    std::string Scheme() const override { return input_.scheme; }
    std::int32_t MarkIn() const override { return mark_in_; }
    void SetMarkIn(std::int32_t milliseconds) override {
        mark_in_ = InRange("MarkIn", milliseconds, 0, kNoUpperLimit);
    }
    std::int32_t MarkOut() const override { return mark_out_; }
    void SetMarkOut(std::int32_t milliseconds) override {
        mark_out_ = InRange("MarkOut", milliseconds, 0, kNoUpperLimit);
    }
    std::int32_t PreProcessPass() const override { return pre_process_pass_; }
    void SetPreProcessPass(std::int32_t passes) override {
        pre_process_pass_ = InRange("PreProcessPass", passes, 0, 1);
    }

  private:
    std::shared_ptr<const EngineParts> parts_;
    SourceInput input_;
    std::int32_t mark_in_ = 0;
    std::int32_t mark_out_ = 0;
    std::int32_t pre_process_pass_ = 0;
};

class AudioSource : public SourceBase<platform::WMEncAudioSource> {
  public:
    using SourceBase::SourceBase;
    std::int32_t Duration() const override;
    std::int32_t ContentMode() const override { return content_mode_; }
    void SetContentMode(std::int32_t mode) override;
    std::string ContentEDL() const override { return content_edl_; }
    void SetContentEDL(const std::string& file) override { content_edl_ = file; }

  private:
    std::int32_t content_mode_ = 0;
    std::string content_edl_;
};

/// Unless they are set, the pixel aspect numbers are 0: the source's own shape.
class VideoSource : public SourceBase<platform::WMEncVideoSource> {
  public:
    using SourceBase::SourceBase;
    /// A still picture lasts as long as StillDuration says.
    std::int32_t Duration() const override;
    bool IsStill() const;
    /// How a camera gives its pictures for this wish; none when the source is no camera. Asks the
    /// camera. Throws Error that names it.
    std::optional<CameraFormat> CameraFormatFor(const CameraWish& wish) const;

    /// For a screen that the desktop has handed out.
    void SetScreenSize(const ScreenSize& size);

    std::int32_t Optimization() const override { return optimization_; }
    void SetOptimization(std::int32_t optimization) override;
    std::uint32_t PixelFormat() const override { return pixel_format_; }
    void SetPixelFormat(std::uint32_t format) override { pixel_format_ = format; }
    std::int32_t PixelAspectRatioX() const override { return pixel_aspect_x_; }
    void SetPixelAspectRatioX(std::int32_t x) override;
    std::int32_t PixelAspectRatioY() const override { return pixel_aspect_y_; }
    void SetPixelAspectRatioY(std::int32_t y) override;
    std::int32_t CroppingLeftMargin() const override { return left_; }
    void SetCroppingLeftMargin(std::int32_t pixels) override;
    std::int32_t CroppingRightMargin() const override { return right_; }
    void SetCroppingRightMargin(std::int32_t pixels) override;
    std::int32_t CroppingTopMargin() const override { return top_; }
    void SetCroppingTopMargin(std::int32_t pixels) override;
    std::int32_t CroppingBottomMargin() const override { return bottom_; }
    void SetCroppingBottomMargin(std::int32_t pixels) override;
    std::int32_t CaptureRate() const override { return capture_rate_; }
    void SetCaptureRate(std::int32_t thousandths) override;
    std::string CaptureArea() const override;
    std::int32_t StillDuration() const override { return still_duration_; }
    void SetStillDuration(std::int32_t milliseconds) override;

  private:
    std::int32_t optimization_ = 0;
    std::uint32_t pixel_format_ = 0;
    std::int32_t pixel_aspect_x_ = 0;
    std::int32_t pixel_aspect_y_ = 0;
    std::int32_t left_ = 0;
    std::int32_t right_ = 0;
    std::int32_t top_ = 0;
    std::int32_t bottom_ = 0;
    std::int32_t capture_rate_ = 30'000;
    std::int32_t still_duration_ = 10'000;
};

}  // namespace engine
