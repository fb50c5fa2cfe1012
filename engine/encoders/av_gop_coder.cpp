#include "engine/encoders/av_gop_coder.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string_view>
#include <utility>

#include "engine/base/av/av_error.h"
#include "engine/encoders/av_video_preset.h"

namespace engine {
namespace {

constexpr int kFinestQuantiser = 1;
constexpr int kCoarsestQuantiser = 31;
constexpr int kLargestTimeBase = 65535;  // of MPEG-4's time increments

AVRational TimeBase(std::int32_t rate_thousandths) {
    AVRational base{};
    av_reduce(&base.num, &base.den, 1000, rate_thousandths, kLargestTimeBase);
    return base;
}

int WholeBits(double bits) {
    return static_cast<int>(std::clamp(bits, 1.0, double{std::numeric_limits<int>::max()}));
}

// The number behind " name:" in what the encoder reports of a picture; 0 when it is absent.
double Field(std::string_view report, std::string_view name) {
    const std::size_t at = report.find(name);
    return at == std::string_view::npos ? 0
                                        : std::strtod(report.data() + at + name.size(), nullptr);
}

}  // namespace

AvGopCoder::AvGopCoder(const VideoPlan& plan, const codecs::RateSettings& rate,
                       double vbv_room_bits, CodedFramePool& packets)
    : fields_(plan.fields), packets_(packets) {
    const std::string subject = fmt::format("Video codec {}", plan.codec->name);
    const AVCodec* encoder =
        avcodec_find_encoder_by_name(std::string(plan.codec->maker.name).c_str());
    if (encoder == nullptr) throw AvError(AVERROR_ENCODER_NOT_FOUND, subject);
    codec_.reset(CheckAllocated(avcodec_alloc_context3(encoder)));
    codec_->width = plan.width;
    codec_->height = plan.height;
    codec_->pix_fmt = AV_PIX_FMT_YUV420P;
    codec_->time_base = TimeBase(CodedFrameRate(plan));
    codec_->framerate = {codec_->time_base.den, codec_->time_base.num};
    codec_->max_b_frames = 0;
    // Key frames begin GOPs; the encoder's own count must not add any.
    codec_->strict_std_compliance = FF_COMPLIANCE_EXPERIMENTAL;
    codec_->gop_size = std::numeric_limits<int>::max() / 2;
    codec_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    codec_->flags |= AV_CODEC_FLAG_QSCALE;  // comes with each picture
    codec_->flags |= AV_CODEC_FLAG_PASS1;   // reports what each picture's parts take
    codec_->bit_rate = plan.bit_rate_bps;   // for the encoder's own header
    codec_->qmin = kFinestQuantiser;
    codec_->qmax = kCoarsestQuantiser;
    SetVbv(rate, vbv_room_bits);
    codec_->thread_count = 1;  // GOPs are what is coded side by side
    if (fields_ != FieldCoding::None)
        codec_->flags |= AV_CODEC_FLAG_INTERLACED_DCT | AV_CODEC_FLAG_INTERLACED_ME;
    ApplyPreset(*codec_, plan.performance);
    CheckAv(avcodec_open2(codec_.get(), encoder, nullptr),
            fmt::format("{} at {}x{}, {} bits per second", subject, plan.width, plan.height,
                        plan.bit_rate_bps));
}

std::vector<std::uint8_t> AvGopCoder::ExtraData() const {
    return {codec_->extradata, codec_->extradata + codec_->extradata_size};
}

void AvGopCoder::SetVbv(const codecs::RateSettings& rate, double room_bits) {
    if (rate.vbv_rate_bps <= 0) return;
    vbv_rate_bps_ = std::llround(rate.vbv_rate_bps);
    codec_->rc_max_rate = vbv_rate_bps_;
    codec_->rc_buffer_size = WholeBits(rate.vbv_bits);
    codec_->rc_initial_buffer_occupancy = WholeBits(std::min(room_bits, rate.vbv_bits));
}

// Time in frames of the nominal rate; and what the VBV has drained by since the last
// frame, when that was longer ago than one.
std::int64_t AvGopCoder::EncoderTime(Ticks time) {
    const std::int64_t nominal = av_rescale_q(time.count, kTicksBase, codec_->time_base);
    const std::int64_t pts = frames_ == 0 ? nominal : std::max(nominal, last_pts_ + 1);
    codec_->rc_max_rate = vbv_rate_bps_ * (frames_ == 0 ? 1 : pts - last_pts_);
    ++frames_;
    last_pts_ = pts;
    return pts;
}

// A source that does not say which field is first has the top one first.
void AvGopCoder::SetFields(AVFrame& frame) const {
    if (fields_ == FieldCoding::None) return;
    if (fields_ != FieldCoding::AsTheSource || frame.interlaced_frame == 0)
        frame.top_field_first = fields_ == FieldCoding::BottomFirst ? 0 : 1;
    frame.interlaced_frame = 1;
}

codecs::PictureBits AvGopCoder::ReportedBits() const {
    if (codec_->stats_out == nullptr) return {};
    const std::string_view report(codec_->stats_out);
    return codecs::PictureBits::Taken(Field(report, " itex:"), Field(report, " ptex:"),
                                      Field(report, " mv:") + Field(report, " misc:"),
                                      Field(report, " q:") / FF_QP2LAMBDA);
}

CodedPicture AvGopCoder::Encode(AVFrame& frame, const PictureRequest& request) {
    const int whole = std::clamp(static_cast<int>(std::lround(request.quantiser)), kFinestQuantiser,
                                 kCoarsestQuantiser);
    frame.pict_type = frames_ == 0 ? AV_PICTURE_TYPE_I : AV_PICTURE_TYPE_NONE;
    frame.quality = whole * FF_QP2LAMBDA;
    SetFields(frame);
    frame.pts = EncoderTime({frame.pts});
    CheckAv(avcodec_send_frame(codec_.get(), &frame), "Encoding of the picture failed");
    PacketHandle packet = packets_.Get();
    // Without B-frames a picture's packet follows at once.
    CheckAv(avcodec_receive_packet(codec_.get(), packet.get()), "Encoding of the picture failed");
    CodedPicture picture;
    picture.key = (packet->flags & AV_PKT_FLAG_KEY) != 0;
    picture.bytes = packets_.Share(std::move(packet));
    picture.bits = ReportedBits();
    return picture;
}

}  // namespace engine
