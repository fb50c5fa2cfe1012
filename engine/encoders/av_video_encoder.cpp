#include "engine/encoders/av_video_encoder.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "engine/encoders/av_video_settings.h"
#include "engine/encoders/video_header.h"
#include "engine/pipeline/av_error.h"

namespace engine {
namespace {

using platform::VbrMode;

constexpr std::int64_t kLargestTimeBase = 65535;  // MPEG-4 counts with 16 bits
constexpr int kUsualBufferMs = 5000;

AVRational TimeBase(std::int32_t rate_thousandths) {
    AVRational base{};
    av_reduce(&base.num, &base.den, 1000, rate_thousandths, kLargestTimeBase);
    return base;
}

}  // namespace

AvVideoEncoder::AvVideoEncoder(const VideoPlan& plan, const EncoderPass& pass, PacketPool& packets)
    : plan_(plan), pass_(pass), report_(pass.first_report), packets_(packets) {
    const std::string subject = fmt::format("Video codec {}", plan.codec->name);
    const AVCodec* encoder = avcodec_find_encoder_by_name(plan.codec->av_encoder);
    if (encoder == nullptr) throw AvError(AVERROR_ENCODER_NOT_FOUND, subject);
    codec_.reset(CheckAllocated(avcodec_alloc_context3(encoder)));
    const PictureFormat format = Format();
    codec_->width = format.width;
    codec_->height = format.height;
    codec_->pix_fmt = format.pixels;
    PlanTwoPasses();
    codec_->framerate = {codec_->time_base.den, codec_->time_base.num};
    codec_->max_b_frames = 0;
    // Key frames come by time; the encoder's own count must not add any.
    codec_->strict_std_compliance = FF_COMPLIANCE_EXPERIMENTAL;
    codec_->gop_size = std::numeric_limits<int>::max() / 2;
    codec_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    codec_->thread_count = 0;  // slices side by side, where the codec has them
    if (plan.fields != FieldCoding::None)
        codec_->flags |= AV_CODEC_FLAG_INTERLACED_DCT | AV_CODEC_FLAG_INTERLACED_ME;
    SetRateControl(*codec_, plan);
    SetEffort(*codec_, plan.performance);
    const int opened = avcodec_open2(codec_.get(), encoder, nullptr);
    buffer_rate_ = codec_->rc_max_rate;
    codec_->stats_in = nullptr;  // is ours
    CheckAv(opened, fmt::format("{} at {}x{}, {} bits per second", subject, plan.width, plan.height,
                                plan.bit_rate_bps));
    const bool follows_report = (codec_->flags & AV_CODEC_FLAG_PASS2) != 0;
    may_drop_ = plan.mode == VbrMode::Constant &&
                (pass_.count == 1 || (pass_.number == 2 && !follows_report));
    bucket_ = RateBucket(plan.bit_rate_bps, plan.buffer_ms > 0 ? plan.buffer_ms : kUsualBufferMs);
}

// The encoder shares out what the frames' number and rate make together, so the rate in a second
// pass is the one that the first has measured. A rate that cannot be met whatever is done is not
// planned for: frames are left out then, as in one pass.
void AvVideoEncoder::PlanTwoPasses() {
    codec_->time_base = TimeBase(CodedFrameRate(plan_));
    if (pass_.count < 2 || plan_.mode == VbrMode::Quality) return;
    if (pass_.number == 1) {
        codec_->flags |= AV_CODEC_FLAG_PASS1;
        return;
    }
    const double bits = plan_.bit_rate_bps * pass_.length.Seconds();
    if (!report_.Fits(bits, CoarsestQuantiser(plan_.sharpness))) return;
    codec_->flags |= AV_CODEC_FLAG_PASS2;
    codec_->stats_in = report_.Text();
    codec_->time_base = TimeBase(static_cast<std::int32_t>(std::clamp(
        std::lround(static_cast<double>(report_.Frames()) * 1000 / pass_.length.Seconds()), 1L,
        1'000'000L)));
}

PictureFormat AvVideoEncoder::Format() const {
    return {AV_PIX_FMT_YUV420P, plan_.width, plan_.height};
}

StreamHeader AvVideoEncoder::Header() const {
    StreamHeader header = VideoStreamHeader(plan_);
    header.extra_data.assign(codec_->extradata, codec_->extradata + codec_->extradata_size);
    return header;
}

bool AvVideoEncoder::KeyFrameDue(Ticks time) const {
    if (!has_key_) return true;
    return plan_.key_frame_distance_ms > 0 &&
           time - last_key_ >= Ticks::FromMilliseconds(plan_.key_frame_distance_ms);
}

// Time in frames of the nominal rate, which the encoder's budget counts with; and what the
// receiver's buffer has drained by since the last frame, when that was longer ago than one.
std::int64_t AvVideoEncoder::EncoderTime(Ticks time) {
    const std::int64_t nominal = av_rescale_q(time.count, kTicksBase, codec_->time_base);
    const std::int64_t pts = frames_ == 0 ? nominal : std::max(nominal, last_pts_ + 1);
    if (buffer_rate_ > 0) codec_->rc_max_rate = buffer_rate_ * (frames_ == 0 ? 1 : pts - last_pts_);
    last_pts_ = pts;
    return pts;
}

// A source that does not say which field is first has the top one first.
void AvVideoEncoder::SetFields(AVFrame& frame) const {
    if (plan_.fields == FieldCoding::None) return;
    if (plan_.fields != FieldCoding::AsTheSource || frame.interlaced_frame == 0)
        frame.top_field_first = plan_.fields == FieldCoding::BottomFirst ? 0 : 1;
    frame.interlaced_frame = 1;
}

bool AvVideoEncoder::Encode(AVFrame& frame, const PacketTaker& take) {
    const Ticks time{frame.pts};
    if (may_drop_ && bucket_.Overflows(time)) {
        ++drops_.frames;
        drops_.bytes += last_bytes_;
        return true;
    }
    // What the first pass has not seen, the second one's encoder has no budget for.
    if ((codec_->flags & AV_CODEC_FLAG_PASS2) != 0 && frames_ == report_.Frames()) return false;
    frame.pict_type = KeyFrameDue(time) ? AV_PICTURE_TYPE_I : AV_PICTURE_TYPE_NONE;
    frame.quality = codec_->global_quality;
    times_ = {time, {frame.pkt_duration}};
    SetFields(frame);
    frame.pts = EncoderTime(time);
    ++frames_;
    CheckAv(avcodec_send_frame(codec_.get(), &frame), "Encoding of the picture failed");
    return Receive(take);
}

bool AvVideoEncoder::Finish(const PacketTaker& take) {
    CheckAv(avcodec_send_frame(codec_.get(), nullptr), "Encoding of the picture failed");
    return Receive(take);
}

bool AvVideoEncoder::Receive(const PacketTaker& take) {
    for (;;) {
        CodedPacket packet;
        packet.data = packets_.Get();
        const int result = avcodec_receive_packet(codec_.get(), packet.data.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return true;
        CheckAv(result, "Encoding of the picture failed");
        if ((codec_->flags & AV_CODEC_FLAG_PASS1) != 0 && codec_->stats_out != nullptr)
            statistics_ += codec_->stats_out;
        packet.presentation = packet.decode = times_.presentation;
        packet.duration = times_.duration;
        packet.key = (packet.data->flags & AV_PKT_FLAG_KEY) != 0;
        if (packet.key) {
            has_key_ = true;
            last_key_ = packet.presentation;
        }
        last_bytes_ = packet.data->size;
        bucket_.Add(last_bytes_);
        if (!take(std::move(packet))) return false;
    }
}

Drops AvVideoEncoder::TakeDrops() { return std::exchange(drops_, {}); }

}  // namespace engine
