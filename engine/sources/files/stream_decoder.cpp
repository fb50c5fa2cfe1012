#include "engine/sources/files/stream_decoder.h"

#include <algorithm>
#include <thread>
#include <utility>

#include "engine/base/av/av_error.h"
#include "engine/sources/files/av_times.h"
#include "engine/sources/files/open_media.h"

namespace engine {
namespace {

constexpr Ticks kUnknownFrameDuration = Ticks::FromMilliseconds(40);
constexpr int kMostBrokenAtEnd = 100;
constexpr unsigned kMostDecoderThreads = 16;  // more of them help little, and each has frames

// Rows as far apart as libavcodec's encoders have them: frames of whole macroblocks they then take
// as they are, and need not copy first.
int GetBuffer(AVCodecContext* codec, AVFrame* frame, int flags) {
    constexpr int kEncodersEdge = 32;  // pixels, of both sides
    constexpr int kMacroblock = 16;
    const bool whole = codec->width % kMacroblock == 0 && codec->height % kMacroblock == 0;
    const int edge = whole ? kEncodersEdge : 0;
    frame->width += edge;
    const int result = avcodec_default_get_buffer2(codec, frame, flags);
    frame->width -= edge;
    return result;
}

void AllocateForEncoders(AVCodecContext& codec) {
    codec.get_buffer2 = GetBuffer;
    // Later versions ask for nothing else, this one wants to be told.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    codec.thread_safe_callbacks = 1;
#pragma GCC diagnostic pop
}

}  // namespace

StreamDecoder::StreamDecoder(const AVStream& stream, Ticks start, const std::string& path,
                             FramePool& frames)
    : frames_(frames), time_base_(stream.time_base), start_(start) {
    const AVCodec* decoder = avcodec_find_decoder(stream.codecpar->codec_id);
    if (decoder == nullptr) throw AvError(AVERROR_DECODER_NOT_FOUND, path);
    codec_.reset(CheckAllocated(avcodec_alloc_context3(decoder)));
    CheckAv(avcodec_parameters_to_context(codec_.get(), stream.codecpar), path);
    codec_->pkt_timebase = stream.time_base;
    // One more than there are processors: those that decode frames side by side wait for each
    // other.
    codec_->thread_count = static_cast<int>(
        std::clamp(std::thread::hardware_concurrency() + 1, 1U, kMostDecoderThreads));
    if (codec_->codec_type == AVMEDIA_TYPE_VIDEO) AllocateForEncoders(*codec_);
    CheckAv(avcodec_open2(codec_.get(), decoder, nullptr), path);
    const Ratio rate = NominalFrameRate(stream);
    if (codec_->codec_type == AVMEDIA_TYPE_VIDEO)
        nominal_duration_ =
            rate.numerator > 0
                ? Ticks{av_rescale(Ticks::kPerSecond, rate.denominator, rate.numerator)}
                : kUnknownFrameDuration;
}

bool StreamDecoder::Decode(const AVPacket* packet, const FrameSink& sink) {
    // A packet is refused while frames wait, hence the second round.
    for (bool sent = false; !sent;) {
        const int result = avcodec_send_packet(codec_.get(), packet);
        sent = result != AVERROR(EAGAIN);
        for (;;) {
            FrameHandle frame = frames_.Get();
            const int received = avcodec_receive_frame(codec_.get(), frame.get());
            if (received == AVERROR(EAGAIN) || received == AVERROR_EOF) break;
            if (received < 0) {
                // A broken frame. While flushing, the next call goes on to the next one; with the
                // decoder's input at hand the packet is used up.
                if (packet != nullptr) break;
                if (++broken_at_end_ > kMostBrokenAtEnd) break;
                continue;
            }
            SetTimes(*frame);
            SetFieldOrder(*frame);
            if (!sink(std::move(frame))) return false;
        }
    }
    return true;
}

// Decoders that know no fields leave it to the file to say that there are some. Of the two orders
// that a file may tell, files that store the fields' lines in turn mean by the first one that of
// time, whatever else they call it.
void StreamDecoder::SetFieldOrder(AVFrame& frame) const {
    if (frame.interlaced_frame != 0) return;
    switch (codec_->field_order) {
        case AV_FIELD_TT:
        case AV_FIELD_TB:
            frame.interlaced_frame = 1;
            frame.top_field_first = 1;
            break;
        case AV_FIELD_BB:
        case AV_FIELD_BT:
            frame.interlaced_frame = 1;
            frame.top_field_first = 0;
            break;
        default:
            break;
    }
}

void StreamDecoder::SetTimes(AVFrame& frame) {
    Ticks duration = nominal_duration_;
    if (codec_->codec_type == AVMEDIA_TYPE_AUDIO) {
        if (frame.sample_rate > 0)
            duration = {av_rescale(frame.nb_samples, Ticks::kPerSecond, frame.sample_rate)};
    } else if (frame.pkt_duration > 0) {
        duration = TicksOf(frame.pkt_duration, time_base_);
    }
    Ticks time = last_end_;
    if (frame.best_effort_timestamp != AV_NOPTS_VALUE)
        time = TicksOf(frame.best_effort_timestamp, time_base_) - start_;
    if (started_ && time <= last_) time = std::max(last_end_, last_ + Ticks{1});
    started_ = true;
    last_ = time;
    last_end_ = time + duration;
    frame.pts = time.count;
    frame.pkt_duration = duration.count;
    frame.pict_type = AV_PICTURE_TYPE_NONE;
}

}  // namespace engine
