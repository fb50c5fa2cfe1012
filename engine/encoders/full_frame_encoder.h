// Uncompressed pictures: 24 bits a pixel, blue first, rows from the bottom up and padded to four
// bytes, as a device-independent bitmap has them.
#pragma once

#include "engine/encoders/encoder.h"
#include "engine/plan/encode_plan.h"

namespace engine {

class FullFrameEncoder final : public VideoEncoder {
  public:
    FullFrameEncoder(const VideoPlan& plan, PacketPool& packets);

    PictureFormat Format() const override;
    StreamHeader Header() const override;
    bool Encode(AVFrame& frame, const PacketTaker& take) override;
    bool Finish(const PacketTaker&) override { return true; }

  private:
    std::size_t PictureBytes() const;

    VideoPlan plan_;
    PacketPool& packets_;
    std::size_t row_bytes_;
    AvPtr<AVBufferPool> buffers_;
};

}  // namespace engine
