#include "codecs/wma_voice/encoder.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>
#include <vector>

#include "codecs/common/index.h"
#include "codecs/wma/sample_range.h"
#include "codecs/wma_voice/music_detector.h"
#include "codecs/wma_voice/packetiser.h"
#include "codecs/wma_voice/rate_control.h"
#include "codecs/wma_voice/superframe_coder.h"

namespace codecs::wma_voice {
namespace {

// Takes off what is constant: a second-order filter. Further up it would turn the phases of voices.
class HighPass {
  public:
    explicit HighPass(int sampling_rate) {
        constexpr double kHz = 2;
        const double w = std::tan(std::numbers::pi * kHz / sampling_rate);
        const double scale = 1 / (1 + std::numbers::sqrt2 * w + w * w);
        gain_ = scale;
        a1_ = 2 * (w * w - 1) * scale;
        a2_ = (1 - std::numbers::sqrt2 * w + w * w) * scale;
    }
    float operator()(float sample) {
        const double in = static_cast<double>(sample);
        const double out = gain_ * in + z1_;
        z1_ = -2 * gain_ * in - a1_ * out + z2_;
        z2_ = gain_ * in - a2_ * out;
        return static_cast<float>(out);
    }

  private:
    double gain_, a1_, a2_;
    double z1_ = 0, z2_ = 0;
};

}  // namespace

StreamFormat FormatFor(const EncoderSettings& settings) {
    return {settings.sampling_rate, settings.bit_rate, settings.low_delay};
}

class Encoder::Impl {
  public:
    Impl(const EncoderSettings& settings, DecodedSink decoded)
        : format_(FormatFor(settings)),
          content_(settings.content),
          music_(settings.sampling_rate),
          high_pass_(settings.sampling_rate),
          coder_(format_),
          packets_(format_),
          rate_(format_),
          decoded_(std::move(decoded)),
          waiting_(Index(coder_.Before())) {}

    void Encode(std::span<const float> samples, const PacketSink& sink) {
        for (const float sample : samples)
            waiting_.push_back(high_pass_(std::clamp(wma::InRange(sample), -1.0F, 1.0F)));
        samples_ += static_cast<std::int64_t>(samples.size());
        while (waiting_.size() >= Needed()) Code(kSuperframeSamples, sink);
    }

    void Finish(const PacketSink& sink) {
        while (coded_ < samples_) {
            waiting_.resize(Needed());
            const std::int64_t left = samples_ - coded_;
            Code(static_cast<int>(std::min<std::int64_t>(left, kSuperframeSamples)), sink);
        }
        packets_.Finish(coder_.Dummy(), Timed(sink));
    }

    std::int64_t MusicSamples() const { return music_samples_; }

  private:
    ContentMode ModeAt(std::int64_t sample) const {
        for (const ContentPart& part : content_.parts)
            if (sample >= part.begin && sample < part.end) return part.mode;
        return content_.mode;
    }

    std::size_t Needed() const {
        return Index(coder_.Before() + kSuperframeSamples + coder_.Behind());
    }

    void Code(int length, const PacketSink& sink) {
        const int fill = static_cast<int>(std::lround(std::max(rate_.Missing(), 0.0)));
        const auto superframe = std::span(waiting_).first(Needed());
        music_.Add(superframe.last(kSuperframeSamples));
        if (music_.IsMusic()) music_samples_ += length;
        const ContentMode mode = ModeAt(coded_);
        const bool mixed =
            mode == ContentMode::Automatic ? music_.IsMusic() : mode == ContentMode::Mixed;
        coder_.Code(superframe, length, {rate_.DbPerBit(), rate_.MostBits(), mixed}, fill, bits_);
        if (decoded_) decoded_(coder_.Decoded().first(Index(length)));
        waiting_.erase(waiting_.begin(), waiting_.begin() + kSuperframeSamples);
        coded_ += length;
        packets_.Add(bits_, Timed(sink));
        rate_.Wrote(packets_.Bits());
        if (rate_.Missing() > packets_.Room() && packets_.CanPad()) packets_.Pad(Timed(sink));
    }

    PacketSink Timed(const PacketSink& sink) const {
        return [this, &sink](Packet packet) {
            const std::int64_t end = std::min(packet.first_sample + packet.samples, samples_);
            packet.first_sample = std::min(packet.first_sample, samples_);
            packet.samples = end - packet.first_sample;
            sink(packet);
        };
    }

    StreamFormat format_;
    Content content_;
    MusicDetector music_;
    std::int64_t music_samples_ = 0;
    HighPass high_pass_;
    SuperframeCoder coder_;
    Packetiser packets_;
    RateControl rate_;
    DecodedSink decoded_;
    std::vector<float> waiting_;  // what the next superframe depends on, and what follows
    std::int64_t samples_ = 0;
    std::int64_t coded_ = 0;
    BitWriter bits_;
};

Encoder::Encoder(const EncoderSettings& settings, DecodedSink decoded)
    : impl_(std::make_unique<Impl>(settings, std::move(decoded))) {}
Encoder::~Encoder() = default;

void Encoder::Encode(std::span<const std::span<const float>> samples, const PacketSink& sink) {
    impl_->Encode(samples.front(), sink);
}
std::int64_t Encoder::MusicSamples() const { return impl_->MusicSamples(); }
void Encoder::Finish(const PacketSink& sink) { impl_->Finish(sink); }

}  // namespace codecs::wma_voice
