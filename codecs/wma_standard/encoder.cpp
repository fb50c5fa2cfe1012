#include "codecs/wma_standard/encoder.h"

#include <algorithm>
#include <utility>

#include "codecs/wma/offset_search.h"
#include "codecs/wma_standard/frame_analysis.h"
#include "codecs/wma_standard/frame_coder.h"
#include "codecs/wma_standard/packet_writer.h"

namespace codecs::wma_standard {
namespace {

using wma::kLeastOffsetDb;
using wma::kMostOffsetDb;

// Few, since the first packet has no sound: at 44.1 kHz as many as profile files tell of that
// codec. At the lowest rates what a file tells of each packet counts more. No more than fifteen
// frames end in a packet, so small ones leave a variable rate more room.
int FramesPerPacket(const EncoderSettings& settings) {
    if (settings.low_delay || settings.mode != RateMode::Constant) return 3;
    return settings.sampling_rate <= 16000 ? 5 : 4;
}

// The offsets of quality 0 and 100.
constexpr double kCoarsestDb = 20;
constexpr double kFinestDb = -12;

wma::RateSettings RateFor(const EncoderSettings& settings, const StreamFormat& format) {
    wma::RateSettings rate;
    rate.mode = settings.mode;
    rate.frame_bits = format.FrameBits();
    rate.frame_seconds = static_cast<double>(format.frame_samples) / format.sampling_rate;
    rate.quality_offset_db =
        kCoarsestDb + (kFinestDb - kCoarsestDb) * std::clamp(settings.quality, 0, 100) / 100.0;
    rate.peak_bits = settings.peak_rate * rate.frame_seconds;
    // Frames are known to the bit, but go in whole packets: one that has begun, and one that waits.
    rate.peak_buffer =
        std::max(settings.peak_rate * settings.peak_seconds - 16.0 * format.packet_bytes,
                 8.0 * format.packet_bytes);
    rate.first_pass = settings.first_pass;
    return rate;
}

// Decoders give nothing for the first two frames: their packet ends there, so that times are
// right whether a decoder counts those frames or not.
constexpr int kSilentFrames = 2;
constexpr double kMostSilentPart = 1.25;  // of what the rate gives a frame

constexpr double kUsualOffsetDb = 0;
constexpr double kOffsetStepDb = 1;

}  // namespace

class Encoder::Impl {
  public:
    explicit Impl(const EncoderSettings& settings)
        : format_(FormatFor(settings)),
          analysis_(format_, TuningFor(format_)),
          coder_(format_),
          packets_(format_),
          rate_(wma::MakeRateControl(RateFor(settings, format_))) {}

    const StreamFormat& Format() const { return format_; }

    void Encode(std::span<const std::span<const float>> samples, const PacketSink& sink) {
        samples_ += static_cast<std::int64_t>(samples.front().size());
        analysis_.Add(samples);
        while (analysis_.HasFrame()) CodeFrame(sink);
    }

    void Finish(const PacketSink& sink) {
        if (samples_ == 0) return;
        const std::int64_t frame = format_.frame_samples;
        const std::int64_t frames = (samples_ + frame - 1) / frame + kSilentFrames;
        analysis_.AddSilence(3);
        while (frames_ < frames) CodeFrame(sink);
        packets_.Finish(Timed(sink));
    }

    FirstPass TakeFirstPass() { return std::move(first_pass_); }

  private:
    void CodeFrame(const PacketSink& sink) {
        Frame& frame = analysis_.Next();
        int bits = ChooseOffset(frame);
        // A packet that is left early costs less than a frame that falls out of its quality.
        if (!packets_.CanTake(bits) && packets_.CanPad() && rate_->Missing() < 0)
            packets_.Pad(Timed(sink));
        while (!packets_.CanTake(bits)) bits = coder_.Code(frame, offset_db_ += kOffsetStepDb);
        bits_.Clear();
        coder_.Writer().Write(frame, bits_);
        bits_.Align();
        packets_.Add({bits_.Bytes(), bits, frame.previous_index, frame.blocks.front().size_index},
                     Timed(sink));
        // The frames without sound are written in advance.
        if (++frames_ <= kSilentFrames) return;
        // The first frame with sound is not to be counted in the packet of those.
        const bool leave_early = frames_ == kSilentFrames + 1 || rate_->Missing() > packets_.Room();
        if (leave_early && packets_.CanPad()) packets_.Pad(Timed(sink));
        // The last packet is filled up: by half of one, as far as is known before.
        rate_->Wrote(packets_.Bits() + 4 * std::int64_t{format_.packet_bytes});
    }

    int ChooseOffset(Frame& frame) {
        if (rate_->NeedsFairOffset())
            fair_offset_ =
                wma::FairOffset(format_.FrameBits(), fair_offset_,
                                [&](double offset_db) { return coder_.Code(frame, offset_db); });
        if (frames_ >= kSilentFrames) first_pass_.push_back(static_cast<float>(fair_offset_));
        if (fair_offset_ <= kLeastOffsetDb) {
            // Silence, or nearly: its fair offset says nothing of what comes later.
            fair_offset_ = kUsualOffsetDb;
            return coder_.Code(frame, offset_db_ = kLeastOffsetDb);
        }
        offset_db_ = rate_->Offset(fair_offset_);
        int bits = coder_.Code(frame, offset_db_);
        // Those without sound all end in the first packet.
        const double most = frames_ < kSilentFrames
                                ? std::min(rate_->MostBits(), kMostSilentPart * format_.FrameBits())
                                : rate_->MostBits();
        while (bits > most && offset_db_ < kMostOffsetDb)
            bits = coder_.Code(frame, offset_db_ += kOffsetStepDb);
        return bits;
    }

    FramePacketSink Timed(const PacketSink& sink) const {
        return [this, &sink](const FramePacket& packet) {
            const auto time = [&](std::int64_t frame) {
                return std::clamp<std::int64_t>((frame - kSilentFrames) * format_.frame_samples, 0,
                                                samples_);
            };
            const std::int64_t first = time(packet.first_frame);
            sink({packet.bytes, first, time(packet.first_frame + packet.frames) - first, true});
        };
    }

    StreamFormat format_;
    FrameAnalysis analysis_;
    FrameCoder coder_;
    PacketWriter packets_;
    std::unique_ptr<wma::RateControl> rate_;
    FirstPass first_pass_;
    BitWriter bits_;
    std::int64_t samples_ = 0;
    std::int64_t frames_ = 0;
    double offset_db_ = 0;
    double fair_offset_ = kUsualOffsetDb;
};

StreamFormat FormatFor(const EncoderSettings& settings) {
    return {settings.sampling_rate, settings.channels, settings.bit_rate / 8,
            FramesPerPacket(settings)};
}

Encoder::Encoder(const EncoderSettings& settings) : impl_(std::make_unique<Impl>(settings)) {}
Encoder::~Encoder() = default;

int Encoder::PacketBytes() const { return impl_->Format().packet_bytes; }
int Encoder::BytesPerSecond() const { return impl_->Format().bytes_per_second; }
std::array<std::uint8_t, 10> Encoder::ExtraData() const { return impl_->Format().ExtraData(); }

void Encoder::Encode(std::span<const std::span<const float>> samples, const PacketSink& sink) {
    impl_->Encode(samples, sink);
}

void Encoder::Finish(const PacketSink& sink) { impl_->Finish(sink); }

FirstPass Encoder::TakeFirstPass() { return impl_->TakeFirstPass(); }

}  // namespace codecs::wma_standard
