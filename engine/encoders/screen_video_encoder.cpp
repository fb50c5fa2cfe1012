#include "engine/encoders/screen_video_encoder.h"

#include <fmt/format.h>

#include <algorithm>
#include <thread>
#include <utility>

#include "codecs/screen/stream_header.h"
#include "engine/base/av/av_error.h"
#include "platform/error.h"

namespace engine {
namespace {

namespace screen = codecs::screen;

// Key frames cost what the whole screen does: while nothing changes, they come this much later.
constexpr int kStillDistances = 6;
// The level of performance below which key frames are coded in half of the time.
constexpr std::int32_t kQuickBelow = 20;

double Seconds(Ticks time) {
    return static_cast<double>(time.count) / static_cast<double>(Ticks::kPerSecond);
}

screen::EncoderSettings SettingsFor(const VideoPlan& plan) {
    if (plan.width > screen::kLargestSide || plan.height > screen::kLargestSide)
        throw platform::Error(
            platform::kInvalidArgument,
            fmt::format("{} at {}x{} is too large: give -v_width and -v_height "
                        "up to {}",
                        plan.codec->name, plan.width, plan.height, screen::kLargestSide));
    screen::EncoderSettings settings;
    settings.width = plan.width;
    settings.height = plan.height;
    settings.frames_per_second = CodedFrameRate(plan) / 1000.0;
    settings.rate_bps = plan.bit_rate_bps;
    settings.quick = plan.performance < kQuickBelow;
    settings.threads = plan.encoder_threads > 0
                           ? plan.encoder_threads
                           : static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
    return settings;
}

// Packed pixels of 32 bits, from the top row down.
screen::PixelView BottomUp(const AVFrame& frame) {
    const std::ptrdiff_t stride = frame.linesize[0] / std::ptrdiff_t{sizeof(std::uint32_t)};
    const auto* const pixels = reinterpret_cast<const std::uint32_t*>(frame.data[0]);
    return {pixels + (frame.height - 1) * stride, -stride};
}

}  // namespace

ScreenVideoEncoder::ScreenVideoEncoder(const VideoPlan& plan, const codecs::RateSettings& rate,
                                       StreamHeader header, CodedFramePool& packets)
    : format_{AV_PIX_FMT_BGR0, plan.width, plan.height},
      keeps_last_(!plan.input.capture),
      key_distance_(Ticks::FromMilliseconds(plan.key_frame_distance_ms)),
      packets_(packets),
      encoder_(SettingsFor(plan)),
      rate_(rate, CodedFrameRate(plan) / 1000.0),
      header_(std::move(header)),
      before_(CheckAllocated(av_frame_alloc())),
      current_(CheckAllocated(av_frame_alloc())) {
    header_.extra_data = encoder_.StreamHeader();
}

bool ScreenVideoEncoder::KeyIsDue(Ticks time) const {
    if (!key_) return true;
    if (key_distance_.count <= 0) return false;
    const std::int64_t distances = changed_since_key_ ? 1 : kStillDistances;
    return time.count - key_->count >= distances * key_distance_.count;
}

bool ScreenVideoEncoder::Encode(AVFrame& frame, const CodedFrameSink& sink) {
    av_frame_unref(current_.get());
    av_frame_move_ref(current_.get(), &frame);
    const Ticks time{current_->pts};
    const Ticks duration{current_->pkt_duration};
    screen::FrameRequest request;
    request.seconds = Seconds(time);
    request.key = KeyIsDue(time);
    rate_.Ask(request);
    const std::optional<screen::CodedFrame> coded = Fitted(request);
    if (!coded) {
        ++dropped_.frames;
        last_.duration = std::max(last_.duration, time + duration - last_.pts);
        return true;
    }
    rate_.Sent(8.0 * static_cast<double>(coded->data.size()));
    std::swap(before_, current_);
    if (coded->key) key_ = time;
    changed_since_key_ = !coded->key && (changed_since_key_ || !coded->unchanged);
    CodedFrame done;
    done.pts = done.dts = time;
    done.duration = duration;
    done.key = coded->key;
    done.bytes = packets_.Copy(coded->data);
    if (keeps_last_) std::swap(last_, done);
    return !done.bytes || sink(std::move(done));
}

// None when it has to be dropped: it does not fit, however coarse its rectangles are.
std::optional<screen::CodedFrame> ScreenVideoEncoder::Fitted(screen::FrameRequest request) {
    const screen::PixelView source = BottomUp(*current_);
    screen::CodedFrame coded = encoder_.Encode(source, request);
    const auto bits = [&] { return 8.0 * static_cast<double>(coded.data.size()); };
    if (!rate_.Overruns(bits())) return coded;
    encoder_.Forget();
    request.moving_bits = 0;
    request.resting_bits = 0;
    coded = encoder_.Encode(source, request);
    if (!rate_.Overruns(bits())) return coded;
    encoder_.Forget();
    dropped_.bytes += static_cast<std::int64_t>(coded.data.size());
    return std::nullopt;
}

bool ScreenVideoEncoder::Finish(const CodedFrameSink& sink) {
    return !last_.bytes || sink(std::exchange(last_, CodedFrame()));
}

DroppedFrames ScreenVideoEncoder::TakeDroppedFrames() { return std::exchange(dropped_, {}); }

}  // namespace engine
