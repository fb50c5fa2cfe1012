// Frames of a screen through our own encoder of Windows Media Video 9 Screen.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "codecs/screen/encoder.h"
#include "codecs/screen/fifteen_bit_encoder.h"
#include "codecs/screen/rate_control.h"
#include "engine/base/av/coded_frame_pool.h"
#include "engine/base/av/encoder.h"
#include "engine/base/av/frame_damage.h"
#include "engine/plan/encode_plan.h"

namespace engine {

/// One frame after the other: each refers to all before it since the last key frame.
class ScreenVideoEncoder final : public VideoEncoder {
  public:
    /// Throws platform::Error (invalid argument) for a size that the format does not have.
    ScreenVideoEncoder(const VideoPlan& plan, const codecs::RateSettings& rate, StreamHeader header,
                       CodedFramePool& packets);

    VideoFrameFormat Format() const override { return format_; }
    StreamHeader Header() const override { return header_; }
    /// The packet of the frame before follows.
    bool Encode(AVFrame& frame, const CodedFrameSink& sink) override;
    bool Finish(const CodedFrameSink& sink) override;
    DroppedFrames TakeDroppedFrames() override;

  private:
    codecs::screen::CodedFrame Code(const codecs::screen::FrameRequest& request);
    void Forget();
    std::optional<codecs::screen::CodedFrame> Fitted(codecs::screen::FrameRequest request);
    bool KeyIsDue(Ticks time) const;

    const VideoFrameFormat format_;
    // A frame is handed on when the next one is known or there is none. Not of a recording, which
    // somebody may be watching.
    const bool keeps_last_;
    const Ticks key_distance_;
    const std::int64_t still_distances_;  // while nothing changes
    CodedFramePool& packets_;
    std::optional<codecs::screen::Encoder> encoder_;  // one of them
    std::optional<codecs::screen::FifteenBitEncoder> fifteen_bits_;
    std::vector<std::uint16_t> pixels_;  // of fifteen bits
    codecs::screen::RateControl rate_;
    StreamHeader header_;
    AvPtr<AVFrame> before_;  // the frame coded last, which the next one is compared with
    AvPtr<AVFrame> current_;
    DamageSum damage_;          // since the frame coded last
    std::optional<Ticks> key_;  // the time of the last key frame
    bool changed_since_key_ = false;
    CodedFrame last_;  // that is kept
    DroppedFrames dropped_;
};

}  // namespace engine
