// Pictures through libavcodec's encoders.
#pragma once

#include <array>

#include "engine/encoders/encoder.h"
#include "engine/encoders/make_encoder.h"
#include "engine/encoders/rate_bucket.h"
#include "engine/plan/encode_plan.h"

namespace engine {

/// The encoder counts frames of the nominal rate; their own times travel beside it. Key frames are
/// asked for by time, and the encoder makes its own at scene changes.
class AvVideoEncoder final : public VideoEncoder {
  public:
    AvVideoEncoder(const VideoPlan& plan, const EncoderPass& pass, PacketPool& packets);

    PictureFormat Format() const override;
    StreamHeader Header() const override;
    bool Encode(AVFrame& frame, const PacketTaker& take) override;
    bool Finish(const PacketTaker& take) override;
    Drops TakeDrops() override;
    std::string FirstPassReport() override { return std::move(report_); }

  private:
    bool Receive(const PacketTaker& take);
    bool KeyFrameDue(Ticks time) const;

    // Frames whose packets have not come out yet; an encoder without B-frames keeps one or none.
    static constexpr std::size_t kInFlight = 64;
    struct Times {
        Ticks presentation;
        Ticks duration;
    };

    VideoPlan plan_;
    EncoderPass pass_;
    PacketPool& packets_;
    AvPtr<AVCodecContext> codec_;
    RateBucket bucket_;
    bool may_drop_ = false;
    Drops drops_;
    std::int64_t last_bytes_ = 0;  // of the frame coded last
    std::array<Times, kInFlight> times_{};
    std::int64_t frames_ = 0;
    std::int64_t frames_known_ = 0;  // second pass: how many the first one saw
    bool has_key_ = false;
    Ticks last_key_;
    std::string report_;
};

}  // namespace engine
