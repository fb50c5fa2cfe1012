#include "engine/filters/deinterlacer.h"

#include <utility>

namespace engine {
namespace {

constexpr int kLeastSide = 3;  // of the filter
constexpr const char* kChain = "bwdif=mode=send_frame:parity=auto:deint=all";
constexpr const char* kSubject = "Deinterlacing failed";

}  // namespace

bool Deinterlacer::Push(FrameHandle frame, const FrameSink& next) {
    const FrameShape shape = ShapeOf(*frame);
    if (shape != shape_) {
        if (!Finish(next)) return false;
        if (shape.width >= kLeastSide && shape.height >= kLeastSide)
            filter_.emplace(kChain, shape, kSubject);
        shape_ = shape;
    }
    if (!filter_) return next(std::move(frame));
    filter_->Push(frame.get());
    return Pull(next);
}

bool Deinterlacer::Finish(const FrameSink& next) {
    if (!filter_) return true;
    filter_->Push(nullptr);
    const bool wanted = Pull(next);
    filter_.reset();
    shape_ = {};
    return wanted;
}

bool Deinterlacer::Pull(const FrameSink& next) {
    for (;;) {
        FrameHandle frame = frames_.Get();
        if (!filter_->Pull(*frame)) return true;
        if (!next(std::move(frame))) return false;
    }
}

}  // namespace engine
