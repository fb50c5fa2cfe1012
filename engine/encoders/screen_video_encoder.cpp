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
constexpr std::int64_t kStillDistances = 6;
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

bool HasFifteenBits(const VideoPlan& plan) {
    return plan.pixels != nullptr && plan.pixels->name == std::string_view("RGB555");
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
    : format_{HasFifteenBits(plan) ? AV_PIX_FMT_RGB555LE : AV_PIX_FMT_BGR0, plan.width,
              plan.height},
      keeps_last_(!plan.input.capture),
      key_distance_(Ticks::FromMilliseconds(plan.key_frame_distance_ms)),
      still_distances_(plan.joined ? 1 : kStillDistances),
      packets_(packets),
      rate_(rate, CodedFrameRate(plan) / 1000.0),
      header_(std::move(header)),
      before_(CheckAllocated(av_frame_alloc())),
      current_(CheckAllocated(av_frame_alloc())) {
    if (HasFifteenBits(plan)) {
        fifteen_bits_.emplace(SettingsFor(plan));
        header_.extra_data = fifteen_bits_->StreamHeader();
    } else {
        encoder_.emplace(SettingsFor(plan));
        header_.extra_data = encoder_->StreamHeader();
    }
}

bool ScreenVideoEncoder::KeyIsDue(Ticks time) const {
    if (!key_) return true;
    if (key_distance_.count <= 0) return false;
    const std::int64_t distances = changed_since_key_ ? 1 : still_distances_;
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
    damage_.Add(*current_);
    const PixelBox& changed = damage_.Changed();
    request.changed = {changed.x, current_->height - changed.Bottom(), changed.width,
                       changed.height};
    rate_.Ask(request);
    std::optional<screen::CodedFrame> coded;
    if (!rate_.IsHopeless()) coded = Fitted(request);
    if (!coded) {
        ++dropped_.frames;
        last_.duration = std::max(last_.duration, time + duration - last_.pts);
        return true;
    }
    rate_.Sent(*coded);
    std::swap(before_, current_);
    damage_.Restart();
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

screen::CodedFrame ScreenVideoEncoder::Code(const screen::FrameRequest& request) {
    if (encoder_) return encoder_->Encode(BottomUp(*current_), request);
    pixels_.resize(std::size_t{1} * static_cast<std::size_t>(current_->width) *
                   static_cast<std::size_t>(current_->height));
    auto out = pixels_.begin();
    for (int y = current_->height - 1; y >= 0; --y) {
        const std::uint8_t* const row =
            current_->data[0] + std::ptrdiff_t{y} * current_->linesize[0];
        const auto* const pixels = reinterpret_cast<const std::uint16_t*>(row);
        out = std::copy_n(pixels, current_->width, out);
    }
    return fifteen_bits_->Encode(pixels_, request);
}

void ScreenVideoEncoder::Forget() {
    if (encoder_)
        encoder_->Forget();
    else
        fifteen_bits_->Forget();
}

// None when it has to be dropped: it does not fit, however coarse its rectangles are.
std::optional<screen::CodedFrame> ScreenVideoEncoder::Fitted(screen::FrameRequest request) {
    screen::CodedFrame coded = Code(request);
    const auto bits = [&] { return 8.0 * static_cast<double>(coded.data.size()); };
    if (!rate_.Overruns(bits())) return coded;
    Forget();
    if (encoder_ && !rate_.Overruns(bits() - coded.rectangle_bits)) {
        request.moving_bits = 0;
        request.resting_bits = 0;
        coded = Code(request);
        if (!rate_.Overruns(bits())) return coded;
        Forget();
    }
    rate_.Dropped(coded);
    dropped_.bytes += static_cast<std::int64_t>(coded.data.size());
    return std::nullopt;
}

bool ScreenVideoEncoder::Finish(const CodedFrameSink& sink) {
    return !last_.bytes || sink(std::exchange(last_, CodedFrame()));
}

DroppedFrames ScreenVideoEncoder::TakeDroppedFrames() { return std::exchange(dropped_, {}); }

}  // namespace engine
