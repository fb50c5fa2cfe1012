#include "codecs/wma_pro/encoder.h"

#include <algorithm>
#include <utility>

#include "codecs/common/index.h"
#include "codecs/wma/offset_search.h"
#include "codecs/wma_pro/frame_analysis.h"
#include "codecs/wma_pro/frame_coder.h"

namespace codecs::wma_pro {
namespace {

using wma::kLeastOffsetDb;
using wma::kMostOffsetDb;

// How long a packet is.
constexpr double kPacketSeconds = 0.2;
constexpr double kShortPacketSeconds = 0.1;
constexpr double kVariablePacketSeconds = 0.3;
constexpr int kLeastPacketBytes = 512;
constexpr int kMostPacketBytes = 32767;
// No frame is larger than a packet: what a sample may take where any rate will do.
constexpr int kMostBitsPerSample = 10;

// The offsets of quality 0 and 100.
constexpr double kCoarsestDb = 20;
constexpr double kFinestDb = -12;

constexpr double kUsualOffsetDb = 0;
constexpr double kOffsetStepDb = 1;

int PacketBytesFor(const EncoderSettings& settings) {
    double seconds = settings.low_delay ? kShortPacketSeconds : kPacketSeconds;
    if (settings.mode != RateMode::Constant) seconds = kVariablePacketSeconds;
    double bytes = settings.bit_rate / 8.0 * seconds;
    if (settings.mode == RateMode::Quality)
        bytes = std::max(bytes, FrameSamples(settings.sampling_rate) * settings.channels *
                                    kMostBitsPerSample / 8.0);
    return static_cast<int>(std::clamp<double>(bytes, kLeastPacketBytes, kMostPacketBytes));
}

wma::RateSettings RateFor(const EncoderSettings& settings, const StreamFormat& format) {
    wma::RateSettings rate;
    rate.mode = settings.mode;
    rate.frame_seconds = static_cast<double>(format.frame_samples) / format.sampling_rate;
    // What stands in front of packets takes its part.
    const double packet_bits = 8.0 * format.packet_bytes;
    const double frames_part = format.MostFrameBits() / packet_bits;
    rate.frame_bits = settings.bit_rate * rate.frame_seconds * frames_part;
    rate.quality_offset_db =
        kCoarsestDb + (kFinestDb - kCoarsestDb) * std::clamp(settings.quality, 0, 100) / 100.0;
    rate.peak_bits = settings.peak_rate * rate.frame_seconds * frames_part;
    // Frames are known to the bit, but go in whole packets: one that has begun, and one that waits.
    rate.peak_buffer =
        std::max(settings.peak_rate * settings.peak_seconds - 2 * packet_bits, packet_bits) *
        frames_part;
    rate.first_pass = settings.first_pass;
    return rate;
}

}  // namespace

StreamFormat FormatFor(const EncoderSettings& settings) {
    return {settings.sampling_rate, settings.channels, settings.bits_per_sample,
            PacketBytesFor(settings)};
}

class Encoder::Impl {
  public:
    explicit Impl(const EncoderSettings& settings)
        : format_(FormatFor(settings)),
          tuning_(TuningFor(format_, settings.bit_rate)),
          team_(std::min(settings.threads, settings.channels)),
          analysis_(format_, tuning_, team_),
          coder_(format_, tuning_.scale_step_db, team_),
          packets_(format_.packet_bytes),
          rate_settings_(RateFor(settings, format_)),
          rate_(wma::MakeRateControl(rate_settings_)) {}

    const StreamFormat& Format() const { return format_; }

    void Encode(std::span<const std::span<const float>> samples, const PacketSink& sink) {
        samples_ += static_cast<std::int64_t>(samples.front().size());
        analysis_.Add(samples);
        while (analysis_.HasFrame()) CodeFrame(0, sink);
    }

    void Finish(const PacketSink& sink) {
        if (samples_ == 0) return;
        const std::int64_t size = format_.frame_samples;
        const std::int64_t frames = (samples_ + size - 1) / size + kSilentFrames;
        analysis_.AddSilence(3);
        while (frames_ + 1 < frames) CodeFrame(0, sink);
        CodeFrame(static_cast<int>((frames - kSilentFrames) * size - samples_), sink);
        packets_.Finish({}, sink);
    }

    FirstPass TakeFirstPass() { return std::move(first_pass_); }

  private:
    // Decoders give nothing for the first frame: it has the half before the sound.
    static constexpr int kSilentFrames = 1;

    /// @param trimmed  samples that are left out at its end
    void CodeFrame(int trimmed, const PacketSink& sink) {
        Frame& frame = analysis_.Next();
        coder_.ChooseMixing(frame, offset_db_);
        const int bits = ChooseOffset(frame);
        FrameExtras extras;
        extras.trimmed = trimmed;
        const int fill = std::min({static_cast<int>(rate_->Missing()), kMostFill,
                                   format_.MostFrameBits() - kTrimBits - bits});
        if (fill >= kLeastFill) extras.fill_bits = fill;
        content_.Clear();
        coder_.Writer().Write(frame, extras, content_);
        wma::Packetiser::Frame packed;
        packed.bits = content_.Size();
        written_ +=
            static_cast<std::int64_t>(packed.bits) + wma::FrameLengthBits(format_.packet_bytes) + 1;
        content_.Align();
        packed.bytes.assign(content_.Bytes().begin(), content_.Bytes().end());
        packed.samples = frames_ < kSilentFrames ? 0 : format_.frame_samples - trimmed;
        packed.key = true;
        packets_.Add(std::move(packed), sink);
        if (++frames_ > kSilentFrames) rate_->Wrote(written_);
    }

    int ChooseOffset(Frame& frame) {
        const auto code = [&](double offset_db) { return coder_.Code(frame, offset_db); };
        if (rate_->NeedsFairOffset())
            fair_offset_ = wma::FairOffset(rate_settings_.frame_bits, fair_offset_, code);
        if (frames_ >= kSilentFrames) first_pass_.push_back(static_cast<float>(fair_offset_));
        if (fair_offset_ <= kLeastOffsetDb) {
            // Silence, or nearly: its fair offset says nothing of what comes later.
            fair_offset_ = kUsualOffsetDb;
            return code(offset_db_ = kLeastOffsetDb);
        }
        offset_db_ = rate_->Offset(fair_offset_);
        int bits = code(offset_db_);
        const double most =
            std::min<double>(rate_->MostBits(), format_.MostFrameBits() - kTrimBits);
        while (bits > most && offset_db_ < kMostOffsetDb) bits = code(offset_db_ += kOffsetStepDb);
        return bits;
    }

    // Of what says how many samples are left out at a frame's end.
    static constexpr int kTrimBits = 20;

    StreamFormat format_;
    Tuning tuning_;
    TaskTeam team_;
    FrameAnalysis analysis_;
    FrameCoder coder_;
    wma::Packetiser packets_;
    wma::RateSettings rate_settings_;
    std::unique_ptr<wma::RateControl> rate_;
    FirstPass first_pass_;
    BitWriter content_;
    std::int64_t samples_ = 0;
    std::int64_t frames_ = 0;
    std::int64_t written_ = 0;  // bits of all frames
    double offset_db_ = kUsualOffsetDb;
    double fair_offset_ = kUsualOffsetDb;
};

Encoder::Encoder(const EncoderSettings& settings) : impl_(std::make_unique<Impl>(settings)) {}
Encoder::~Encoder() = default;

const StreamFormat& Encoder::Format() const { return impl_->Format(); }

void Encoder::Encode(std::span<const std::span<const float>> samples, const PacketSink& sink) {
    impl_->Encode(samples, sink);
}

void Encoder::Finish(const PacketSink& sink) { impl_->Finish(sink); }

FirstPass Encoder::TakeFirstPass() { return impl_->TakeFirstPass(); }

}  // namespace codecs::wma_pro
