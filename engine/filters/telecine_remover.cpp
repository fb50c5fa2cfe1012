#include "engine/filters/telecine_remover.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "engine/base/av/av_error.h"

namespace engine {
namespace {

constexpr int kBlockWidth = 16;
constexpr int kBlockRows = 16;              // 8 of each field
constexpr int kMovingDifference = 6 * 128;  // of a block's field; coding noise stays below
constexpr std::int64_t kLeastMovingBlocks = 2;
constexpr std::int64_t kClearRatio = 3;  // a field repeats when the other one differs so much more
constexpr int kLeastRepeatsToLock = 3;   // of the four in two cycles
constexpr const char* kSubject = "Telecine removal failed";

// Positions in a cycle, counted from the frame that repeats first.
enum Position { kThird = 0, kFourth = 1, kFifth = 2, kFirst = 3, kSecond = 4 };

bool Comparable(const AVFrame& frame) {
    const AVPixFmtDescriptor* format =
        av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    constexpr std::uint64_t kNotBytes =
        AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BITSTREAM | AV_PIX_FMT_FLAG_PAL;
    return format != nullptr && (format->flags & kNotBytes) == 0 && format->comp[0].depth == 8 &&
           frame.width >= kBlockWidth && frame.height >= kBlockRows;
}

struct FieldDifference {
    int top = 0;
    int bottom = 0;
};

FieldDifference CompareBlock(const AVFrame& a, const AVFrame& b, int x, int y) {
    FieldDifference difference;
    for (int row = y; row < y + kBlockRows; ++row) {
        const std::uint8_t* from = a.data[0] + static_cast<std::ptrdiff_t>(row) * a.linesize[0] + x;
        const std::uint8_t* to = b.data[0] + static_cast<std::ptrdiff_t>(row) * b.linesize[0] + x;
        int sum = 0;
        for (int i = 0; i < kBlockWidth; ++i) sum += std::abs(from[i] - to[i]);
        (row % 2 == 0 ? difference.top : difference.bottom) += sum;
    }
    return difference;
}

}  // namespace

TelecineRemover::TelecineRemover(const std::optional<TelecinePattern>& told, FramePool& frames)
    : frames_(frames), told_(told.has_value()), look_ahead_(told ? 1 : kLookAhead), locked_(told_) {
    if (!told) return;
    const int position = (told->first_frame + kFirst) % kCycle;  // of the frame with index 0
    cadence_ = {(kCycle - position) % kCycle, told->bottom_first};
}

TelecineRemover::Repeat TelecineRemover::Compare(const AVFrame& frame, const AVFrame* before) {
    if (before == nullptr || before->width != frame.width || before->height != frame.height ||
        before->format != frame.format || !Comparable(frame))
        return Repeat::Unclear;
    std::int64_t top = 0;
    std::int64_t bottom = 0;
    std::int64_t moving = 0;
    for (int y = 0; y + kBlockRows <= frame.height; y += kBlockRows) {
        for (int x = 0; x + kBlockWidth <= frame.width; x += kBlockWidth) {
            const FieldDifference block = CompareBlock(frame, *before, x, y);
            if (std::max(block.top, block.bottom) < kMovingDifference) continue;
            ++moving;
            top += block.top;
            bottom += block.bottom;
        }
    }
    if (moving < kLeastMovingBlocks) return Repeat::Unclear;
    if (top * kClearRatio < bottom) return Repeat::Top;
    if (bottom * kClearRatio < top) return Repeat::Bottom;
    return Repeat::Nothing;
}

TelecineRemover::Repeat TelecineRemover::Expected(const Cadence& cadence,
                                                  std::int64_t index) const {
    switch ((index - cadence.phase + kCycle) % kCycle) {
        case kThird:
            return cadence.bottom_first ? Repeat::Bottom : Repeat::Top;
        case kFifth:
            return cadence.bottom_first ? Repeat::Top : Repeat::Bottom;
        default:
            return Repeat::Nothing;
    }
}

bool TelecineRemover::Agrees(const Cadence& cadence, std::size_t frames, int least_repeats) const {
    int repeats = 0;
    for (std::size_t i = 0; i < std::min(frames, pending_.size()); ++i) {
        const Pending& pending = pending_[i];
        if (pending.repeat == Repeat::Unclear) continue;
        if (pending.repeat != Expected(cadence, pending.index)) return false;
        if (pending.repeat != Repeat::Nothing) ++repeats;
    }
    return repeats >= least_repeats;
}

void TelecineRemover::FindCadence() {
    if (told_ || (locked_ && Agrees(cadence_, kCycle, 0))) return;
    locked_ = false;
    for (int phase = 0; phase < kCycle && !locked_; ++phase) {
        for (const bool bottom_first : {false, true}) {
            const Cadence cadence{phase, bottom_first};
            if (locked_ || !Agrees(cadence, kLookAhead, kLeastRepeatsToLock)) continue;
            cadence_ = cadence;
            locked_ = true;
        }
    }
}

bool TelecineRemover::Push(FrameHandle frame, const FrameSink& next) {
    Pending pending;
    pending.index = taken_++;
    if (told_ && pending.index == 0) start_ = frame->pts;
    if (!told_) {
        pending.repeat = Compare(*frame, last_.get());
        last_ = frames_.Get();
        CheckAv(av_frame_ref(last_.get(), frame.get()), kSubject);
    }
    pending.frame = std::move(frame);
    pending_.push_back(std::move(pending));
    return pending_.size() <= look_ahead_ || EmitFront(next);
}

bool TelecineRemover::Finish(const FrameSink& next) {
    while (!pending_.empty())
        if (!EmitFront(next)) return false;
    return true;
}

bool TelecineRemover::EmitFront(const FrameSink& next) {
    FindCadence();
    Pending front = std::move(pending_.front());
    pending_.pop_front();
    if (front.used) return true;
    if (!locked_) return next(std::move(front.frame));

    const std::int64_t interval = front.frame->pkt_duration;
    const std::int64_t film_interval = interval * kCycle / (kCycle - 1);
    std::int64_t delay = 0;
    switch ((front.index - cadence_.phase + kCycle) % kCycle) {
        case kSecond:
            delay = interval / 4;
            break;
        case kThird: {
            if (pending_.empty()) {
                if (told_) return true;
                break;
            }
            FrameHandle woven = Weave(*front.frame, *pending_.front().frame, cadence_.bottom_first);
            if (!woven) break;
            front.frame = std::move(woven);
            pending_.front().used = true;
            delay = interval / 2;
            break;
        }
        case kFourth:  // its first half was not seen: the cadence was found inside a cycle
            if (!told_) return next(std::move(front.frame));
            return true;
        case kFifth:
            delay = -interval / 4;
            break;
        default:
            break;
    }
    front.frame->pts += delay;
    front.frame->pkt_duration = film_interval;
    if (start_) {
        front.frame->pkt_duration += front.frame->pts - *start_;
        front.frame->pts = *start_;
        start_.reset();
    }
    return next(std::move(front.frame));
}

FrameHandle TelecineRemover::Weave(const AVFrame& third, const AVFrame& fourth, bool bottom_first) {
    const auto format = static_cast<AVPixelFormat>(third.format);
    if (fourth.format != third.format || fourth.width != third.width ||
        fourth.height != third.height)
        return {};
    constexpr int kAlign = 32;
    const auto bytes = static_cast<std::size_t>(
        CheckAv(av_image_get_buffer_size(format, third.width, third.height, kAlign), kSubject));
    if (bytes != buffer_bytes_) {
        buffers_.reset(
            CheckAllocated(av_buffer_pool_init(bytes + AV_INPUT_BUFFER_PADDING_SIZE, nullptr)));
        buffer_bytes_ = bytes;
    }
    FrameHandle woven = frames_.Get();
    CheckAv(av_frame_copy_props(woven.get(), &third), kSubject);
    woven->format = third.format;
    woven->width = third.width;
    woven->height = third.height;
    woven->buf[0] = CheckAllocated(av_buffer_pool_get(buffers_.get()));
    CheckAv(av_image_fill_arrays(woven->data, woven->linesize, woven->buf[0]->data, format,
                                 third.width, third.height, kAlign),
            kSubject);
    // The third frame gives the field that it does not repeat.
    const AVFrame* const of_top = bottom_first ? &third : &fourth;
    const AVFrame* const of_bottom = bottom_first ? &fourth : &third;
    const AVPixFmtDescriptor* layout = av_pix_fmt_desc_get(format);
    for (int plane = 0; plane < av_pix_fmt_count_planes(format); ++plane) {
        const int row_bytes = av_image_get_linesize(format, third.width, plane);
        const bool chroma = plane == 1 || plane == 2;
        const int rows = chroma ? -((-third.height) >> layout->log2_chroma_h) : third.height;
        for (int row = 0; row < rows; ++row) {
            const AVFrame& from = row % 2 == 0 ? *of_top : *of_bottom;
            std::copy_n(
                from.data[plane] + static_cast<std::ptrdiff_t>(row) * from.linesize[plane],
                row_bytes,
                woven->data[plane] + static_cast<std::ptrdiff_t>(row) * woven->linesize[plane]);
        }
    }
    return woven;
}

}  // namespace engine
