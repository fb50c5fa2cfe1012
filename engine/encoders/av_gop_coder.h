// A closed GOP through one of libavcodec's encoders.
#pragma once

#include <cstdint>
#include <vector>

#include "codecs/common/rate_settings.h"
#include "engine/encoders/gop_coder.h"
#include "engine/plan/encode_plan.h"

namespace engine {

/// The encoder counts in frames of the nominal rate and makes key frames of its own at scene
/// changes. A picture that the VBV does not take is coded again, more coarsely.
class AvGopCoder final : public GopCoder {
  public:
    /// Throws platform::Error (invalid argument) with the codec named.
    AvGopCoder(const VideoPlan& plan, const codecs::RateSettings& rate, double vbv_room_bits,
               CodedFramePool& packets);

    CodedPicture Encode(AVFrame& frame, const PictureRequest& request) override;
    /// The same for all GOPs of a plan.
    std::vector<std::uint8_t> ExtraData() const;

  private:
    std::int64_t EncoderTime(Ticks time);
    void SetFields(AVFrame& frame) const;
    void SetVbv(const codecs::RateSettings& rate, double room_bits);
    codecs::PictureBits ReportedBits() const;

    FieldCoding fields_;
    CodedFramePool& packets_;
    AvPtr<AVCodecContext> codec_;
    std::int64_t vbv_rate_bps_ = 0;
    std::int64_t last_pts_ = 0;
    std::int64_t frames_ = 0;
};

}  // namespace engine
