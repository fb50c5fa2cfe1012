#include "codecs/wma_standard/encoder.h"

#include <algorithm>
#include <cmath>

#include "codecs/common/index.h"
#include "codecs/wma_standard/frame_analysis.h"
#include "codecs/wma_standard/frame_coder.h"
#include "codecs/wma_standard/rate_control.h"

namespace codecs::wma_standard {
namespace {

// About as long as packets of that codec usually are.
int FramesPerPacket(int sampling_rate) { return sampling_rate <= 11025 ? 5 : 8; }

// Decoders give nothing for the first two frames: their packet ends there, so that times are
// right whether a decoder counts those frames or not.
constexpr int kSilentFrames = 2;

constexpr double kLeastOffsetDb = -50;
constexpr double kMostOffsetDb = 50;
constexpr double kUsualOffsetDb = 0;
constexpr double kOffsetStepDb = 1;

// The search for an offset: how many dB halve the bits, about; within which part of the wanted bits
// it ends.
constexpr double kDbByDoubling = 9;
constexpr double kNearEnough = 0.06;
constexpr int kMostTries = 12;

}  // namespace

class Encoder::Impl {
  public:
    explicit Impl(const EncoderSettings& settings)
        : format_(settings.sampling_rate, settings.channels, settings.bit_rate / 8,
                  FramesPerPacket(settings.sampling_rate)),
          analysis_(format_, TuningFor(format_)),
          coder_(format_),
          packets_(format_),
          rate_({format_.FrameBits(),
                 static_cast<double>(format_.frame_samples) / format_.sampling_rate}) {}

    const StreamFormat& Format() const { return format_; }

    void Encode(std::span<const std::span<const float>> samples, const CodedPacketSink& sink) {
        samples_ += static_cast<std::int64_t>(samples.front().size());
        analysis_.Add(samples);
        while (analysis_.HasFrame()) CodeFrame(sink);
    }

    void Finish(const CodedPacketSink& sink) {
        if (samples_ == 0) return;
        const std::int64_t frame = format_.frame_samples;
        const std::int64_t frames = (samples_ + frame - 1) / frame + kSilentFrames;
        analysis_.AddSilence(3);
        while (frames_ < frames) CodeFrame(sink);
        packets_.Finish(Timed(sink));
    }

  private:
    void CodeFrame(const CodedPacketSink& sink) {
        Frame& frame = analysis_.Next();
        int bits = ChooseOffset(frame);
        while (!packets_.CanTake(bits)) bits = coder_.Code(frame, offset_db_ += 1);
        bits_.Clear();
        coder_.Writer().Write(frame, bits_);
        bits_.Align();
        packets_.Add({bits_.Bytes(), bits, frame.previous_index, frame.blocks.front().size_index},
                     Timed(sink));
        // The frames without sound are written in advance.
        if (++frames_ <= kSilentFrames) return;
        if (frames_ == kSilentFrames + 1) packets_.Pad(Timed(sink));
        rate_.Wrote(packets_.Bits());
        if (!packets_.CanPad() || rate_.Behind() <= packets_.Room()) return;
        packets_.Pad(Timed(sink));
        rate_.SetWritten(packets_.Bits());
    }

    int ChooseOffset(Frame& frame) {
        FindFairOffset(frame);
        if (fair_offset_ <= kLeastOffsetDb) {
            // Silence, or nearly: its fair offset says nothing of what comes later.
            fair_offset_ = kUsualOffsetDb;
            return coder_.Code(frame, offset_db_ = kLeastOffsetDb);
        }
        offset_db_ = rate_.Offset(fair_offset_);
        int bits = coder_.Code(frame, offset_db_);
        while (bits > rate_.MostBits() && offset_db_ < kMostOffsetDb)
            bits = coder_.Code(frame, offset_db_ += 1);
        return bits;
    }

    // The offset with which the frame takes as much as the rate gives a frame, about.
    void FindFairOffset(Frame& frame) {
        const double wanted = format_.FrameBits();
        double low = kLeastOffsetDb;
        double high = kMostOffsetDb;
        double offset = fair_offset_;
        for (int tries = 0; tries < kMostTries && high - low > kOffsetStepDb; ++tries) {
            const double bits = coder_.Code(frame, offset);
            (bits > wanted ? low : high) = offset;
            const double parts = bits / wanted;
            if (std::abs(parts - 1) < kNearEnough) break;
            offset = std::clamp(offset + kDbByDoubling * std::log2(parts), low + kOffsetStepDb / 2,
                                high - kOffsetStepDb / 2);
        }
        fair_offset_ = high - low > kOffsetStepDb ? offset : high;
        if (high - kLeastOffsetDb <= kOffsetStepDb) fair_offset_ = kLeastOffsetDb;
    }

    PacketSink Timed(const CodedPacketSink& sink) const {
        return [this, &sink](const Packet& packet) {
            const auto time = [&](std::int64_t frame) {
                return std::clamp<std::int64_t>((frame - kSilentFrames) * format_.frame_samples, 0,
                                                samples_);
            };
            const std::int64_t first = time(packet.first_frame);
            sink({packet.bytes, first, time(packet.first_frame + packet.frames) - first});
        };
    }

    StreamFormat format_;
    FrameAnalysis analysis_;
    FrameCoder coder_;
    PacketWriter packets_;
    ConstantRate rate_;
    BitWriter bits_;
    std::int64_t samples_ = 0;
    std::int64_t frames_ = 0;
    double offset_db_ = 0;
    double fair_offset_ = kUsualOffsetDb;
};

Encoder::Encoder(const EncoderSettings& settings) : impl_(std::make_unique<Impl>(settings)) {}
Encoder::~Encoder() = default;

int Encoder::PacketBytes() const { return impl_->Format().packet_bytes; }
int Encoder::BytesPerSecond() const { return impl_->Format().bytes_per_second; }
std::array<std::uint8_t, 10> Encoder::ExtraData() const { return impl_->Format().ExtraData(); }

void Encoder::Encode(std::span<const std::span<const float>> samples, const CodedPacketSink& sink) {
    impl_->Encode(samples, sink);
}

void Encoder::Finish(const CodedPacketSink& sink) { impl_->Finish(sink); }

}  // namespace codecs::wma_standard
