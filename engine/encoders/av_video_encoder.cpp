#include "engine/encoders/av_video_encoder.h"

#include <fmt/format.h>

#include <algorithm>
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
    : plan_(plan), pass_(pass), packets_(packets) {
    const std::string subject = fmt::format("Video codec {}", plan.codec->name);
    const AVCodec* encoder = avcodec_find_encoder_by_name(plan.codec->av_encoder);
    if (encoder == nullptr) throw AvError(AVERROR_ENCODER_NOT_FOUND, subject);
    codec_.reset(CheckAllocated(avcodec_alloc_context3(encoder)));
    const PictureFormat format = Format();
    codec_->width = format.width + (format.repeat_last_column ? 1 : 0);
    codec_->height = format.height;
    codec_->pix_fmt = format.pixels;
    codec_->time_base = TimeBase(CodedFrameRate(plan));
    codec_->framerate = {codec_->time_base.den, codec_->time_base.num};
    codec_->max_b_frames = 0;
    // Key frames come by time; the encoder's own count must not add any.
    codec_->strict_std_compliance = FF_COMPLIANCE_EXPERIMENTAL;
    codec_->gop_size = std::numeric_limits<int>::max() / 2;
    codec_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    codec_->thread_count = 1;
    SetRateControl(*codec_, plan, pass_, pass_.first_report);
    SetEffort(*codec_, plan.performance);
    const int opened = avcodec_open2(codec_.get(), encoder, nullptr);
    codec_->stats_in = nullptr;  // is ours
    CheckAv(opened, fmt::format("{} at {}x{}, {} bits per second", subject, plan.width, plan.height,
                                plan.bit_rate_bps));
    if (pass_.number == 2)
        frames_known_ = std::count(pass_.first_report.begin(), pass_.first_report.end(), ';');
    may_drop_ = plan.mode == VbrMode::Constant && pass_.count == 1;
    bucket_ = RateBucket(plan.bit_rate_bps, plan.buffer_ms > 0 ? plan.buffer_ms : kUsualBufferMs);
}

PictureFormat AvVideoEncoder::Format() const {
    return {AV_PIX_FMT_YUV420P, plan_.width, plan_.height,
            plan_.codec->even_width && plan_.width % 2 != 0};
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

bool AvVideoEncoder::Encode(AVFrame& frame, const PacketTaker& take) {
    const Ticks time{frame.pts};
    if (may_drop_ && bucket_.Overflows(time)) {
        ++drops_.frames;
        drops_.bytes += last_bytes_;
        return true;
    }
    // What the first pass has not seen, the second one's encoder has no budget for.
    if (pass_.number == 2 && frames_ == frames_known_) return false;
    frame.pict_type = KeyFrameDue(time) ? AV_PICTURE_TYPE_I : AV_PICTURE_TYPE_NONE;
    frame.quality = codec_->global_quality;
    times_[static_cast<std::size_t>(frames_) % kInFlight] = {time, {frame.pkt_duration}};
    frame.pts = frames_++;
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
            report_ += codec_->stats_out;
        const Times& times = times_[static_cast<std::size_t>(packet.data->pts) % kInFlight];
        packet.presentation = packet.decode = times.presentation;
        packet.duration = times.duration;
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
