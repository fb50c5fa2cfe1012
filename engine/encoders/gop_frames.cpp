#include "engine/encoders/gop_frames.h"

#include <algorithm>
#include <optional>

#include "codecs/common/picture_cost.h"
#include "engine/base/av/av_error.h"

namespace engine {
namespace {

constexpr double kNewOfStep = 0.35;  // of what differs, where no motion is searched for
constexpr double kFarther = 0.3;     // of what a picture between adds to what is new

codecs::LumaPlane Luma(const AVFrame& frame) {
    return {frame.data[0], frame.linesize[0], frame.width, frame.height};
}

}  // namespace

double IntraCostOf(const AVFrame& frame) { return codecs::IntraCost(Luma(frame)); }

std::vector<const AVFrame*> Pointers(const AVFrame* before, std::span<const GopFrame> frames) {
    std::vector<const AVFrame*> pointers;
    if (before != nullptr) pointers.push_back(before);
    for (const GopFrame& frame : frames) pointers.push_back(frame.frame.get());
    return pointers;
}

void Judge(GopFrame& frame, FrameHandle& before, GopCoder* coder, FramePool& frames) {
    frame.intra_cost = IntraCostOf(*frame.frame);
    std::optional<double> news;
    if (coder != nullptr) news = coder->LookAhead(*frame.frame);
    if (!before)
        frame.step_cost = frame.intra_cost;
    else if (news)
        frame.step_cost = codecs::NewPart(*news) * frame.intra_cost;
    else
        frame.step_cost = (coder != nullptr ? kNewOfStep : 1) *
                          codecs::InterCost(Luma(*frame.frame), Luma(*before));
    FrameHandle copy = frames.Get();
    CheckAv(av_frame_ref(copy.get(), frame.frame.get()), "Encoding of the picture failed");
    before = std::move(copy);
}

void ListWaiting(std::span<const GopFrame> frames, Ticks start,
                 std::vector<codecs::WaitingPicture>& waiting) {
    waiting.clear();
    for (const GopFrame& frame : frames)
        if (!frame.decided)
            waiting.push_back(
                {(Ticks{frame.frame->pts} - start).Seconds(), frame.intra_cost, frame.step_cost});
}

codecs::RatedPicture Rated(const GopFrame& frame, codecs::PictureKind kind,
                           std::span<const GopFrame> frames) {
    codecs::RatedPicture picture;
    picture.index = frame.index;
    picture.kind = kind;
    picture.intra_cost = frame.intra_cost;
    picture.step_cost = frame.step_cost;
    double cost = frame.step_cost;
    // Behind the B pictures that stand before it, more is new: not all, since much of it is noise.
    if (kind == codecs::PictureKind::kP)
        for (const GopFrame& other : frames)
            if (!other.decided && other.index < frame.index)
                cost = std::max(cost, other.step_cost) + kFarther * std::min(cost, other.step_cost);
    picture.inter_cost = std::min(cost, frame.intra_cost);
    return picture;
}

}  // namespace engine
