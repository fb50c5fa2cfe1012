// A closed GOP through our own Windows Media Video 9 encoder.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "codecs/wmv9/encoder.h"
#include "engine/encoders/gop_coder.h"
#include "engine/plan/encode_plan.h"

namespace engine {

/// What the encoder is asked for: B pictures and GOPs side by side for files; for
/// what is recorded, the rows of one picture side by side and each picture at once. Throws
/// platform::Error (invalid argument) for a size that the format does not have.
codecs::wmv9::EncoderSettings Wmv9Settings(const VideoPlan& plan);

class Wmv9GopCoder final : public GopCoder {
  public:
    Wmv9GopCoder(const codecs::wmv9::EncoderSettings& settings, CodedFramePool& packets)
        : encoder_(settings), packets_(packets) {}

    CodedPicture Encode(AVFrame& frame, const PictureRequest& request) override;
    CodedPicture Recode(AVFrame& frame, const PictureRequest& request) override;
    void Forget() override { encoder_.Forget(); }
    bool Recodes() const override { return true; }
    std::optional<double> LookAhead(const AVFrame& frame) override;
    int ChooseBPictures(std::span<const AVFrame* const> next, int first) override;
    /// The same for all GOPs of a plan.
    std::vector<std::uint8_t> ExtraData() const;

  private:
    CodedPicture Packed(const codecs::wmv9::CodedPicture& coded);

    codecs::wmv9::Encoder encoder_;
    CodedFramePool& packets_;
};

}  // namespace engine
