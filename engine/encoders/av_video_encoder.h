// Pictures through libavcodec's encoders.
#pragma once

#include <string>
#include <utility>

#include "engine/encoders/encoder.h"
#include "engine/encoders/first_pass_report.h"
#include "engine/encoders/make_encoder.h"
#include "engine/encoders/rate_bucket.h"
#include "engine/plan/encode_plan.h"

namespace engine {

/// The encoder counts in frames of the nominal rate; the frames' own times travel beside it. Key
/// frames are asked for by time, and the encoder makes its own at scene changes.
class AvVideoEncoder final : public VideoEncoder {
  public:
    AvVideoEncoder(const VideoPlan& plan, const EncoderPass& pass, PacketPool& packets);

    PictureFormat Format() const override;
    StreamHeader Header() const override;
    bool Encode(AVFrame& frame, const PacketTaker& take) override;
    bool Finish(const PacketTaker& take) override;
    Drops TakeDrops() override;
    std::string TakeFirstPassText() override { return std::move(statistics_); }

  private:
    void PlanTwoPasses();
    std::int64_t EncoderTime(Ticks time);
    bool Receive(const PacketTaker& take);
    void SetFields(AVFrame& frame) const;
    bool KeyFrameDue(Ticks time) const;

    struct Times {
        Ticks presentation;
        Ticks duration;
    };

    VideoPlan plan_;
    EncoderPass pass_;
    FirstPassReport report_;
    PacketPool& packets_;
    AvPtr<AVCodecContext> codec_;
    RateBucket bucket_;
    bool may_drop_ = false;
    Drops drops_;
    std::int64_t last_bytes_ = 0;  // of the frame coded last
    Times times_;  // of the frame in hand: without B-frames its packet follows at once
    std::int64_t last_pts_ = 0;
    std::int64_t buffer_rate_ = 0;  // at which the receiver's buffer drains
    std::int64_t frames_ = 0;
    bool has_key_ = false;
    Ticks last_key_;
    std::string statistics_;  // of a first pass
};

}  // namespace engine
