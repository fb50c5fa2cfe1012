#include "engine/encoders/gop_video_encoder.h"

#include <algorithm>
#include <utility>

#include "engine/base/av/av_error.h"
#include "engine/encoders/video_header.h"
#include "engine/encoders/video_rate.h"
#include "engine/plan/frame_memory.h"

namespace engine {
namespace {

using codecs::PictureKind;

constexpr std::size_t kBurst = 16;  // packets; see FrameMemory for frames
constexpr int kMostRecoded = 2;     // times; then as coarsely as can be

// What is recorded has one, so that each packet follows its picture.
std::size_t Workers(const VideoPlan& plan) {
    const bool one = plan.input.capture || CodesRows(plan) || FrameMemoryOf(plan).waiting == 0;
    const int asked = one ? 1 : plan.encoder_threads;
    const unsigned count = asked > 0 ? static_cast<unsigned>(asked)
                                     : std::max(1U, std::thread::hardware_concurrency());
    return std::min<std::size_t>(count, codecs::RateAllocator::kMostAtOnce);
}

// What one worker needs to go on, and room for those beside it.
std::size_t MostHeld(std::size_t workers, const FrameMemory& memory, int b_pictures, int ahead) {
    constexpr std::size_t kSpare = 2;
    return kSpare + static_cast<std::size_t>(b_pictures + ahead) +
           (workers - 1) * static_cast<std::size_t>(memory.waiting);
}

// A picture that is recorded waits for no other; for its rate, a second pass knows them all, and
// one quantiser asks for none.
int Ahead(const VideoPlan& plan, const codecs::RateSettings& rate, const EncoderPass& pass,
          int lookahead) {
    if (plan.input.capture) return 0;
    const bool knows = !pass.first_report.empty() || rate.finest == rate.coarsest;
    const int most = FrameMemoryOf(plan).look_ahead;
    return knows ? std::min(lookahead, most) : most;
}

// Of a frame that only others are compared with.
void ReleaseChroma(AVFrame& frame) {
    for (int plane = 1; plane < 3; ++plane) {
        av_buffer_unref(&frame.buf[plane]);
        frame.data[plane] = nullptr;
    }
}

}  // namespace

struct GopVideoEncoder::Outcome {
    CodedFrame coded;  // without bytes when the frame was dropped
    std::size_t index = 0;
    codecs::FoundPicture found;
    DroppedFrames dropped;
};

struct GopVideoEncoder::Work {
    Gop* gop = nullptr;
    std::unique_ptr<GopCoder> coder;
    std::size_t taken = 0;       // frames
    std::vector<GopFrame> next;  // as shown, not yet coded
    std::size_t judged = 0;      // of those, their costs are known
    FrameHandle latest;          // that was judged
    FrameHandle past, before;    // the last two that others refer to
    Ticks before_time;
    std::size_t before_index = 0;  // in the GOP
    bool all = false;              // of the GOP that are left are in `next`
    std::vector<codecs::WaitingPicture> waiting;
};

GopVideoEncoder::GopVideoEncoder(const VideoPlan& plan, const codecs::RateSettings& rate,
                                 const EncoderPass& pass, VideoFrameFormat format,
                                 StreamHeader header, GopCoderMaker make_coder, int b_pictures,
                                 int lookahead)
    : format_(format),
      header_(std::move(header)),
      make_coder_(std::move(make_coder)),
      b_pictures_(b_pictures),
      ahead_(Ahead(plan, rate, pass, lookahead)),
      rate_(rate),
      gop_length_(GopLength(plan)),
      length_(pass.length),
      keeps_last_(!plan.input.capture),
      workers_(Workers(plan)),
      most_held_(MostHeld(workers_, FrameMemoryOf(plan), b_pictures_, ahead_)),
      few_held_(most_held_ - std::min(static_cast<std::size_t>(FrameMemoryOf(plan).burst),
                                      (most_held_ - FewestHeld()) / 2)),
      usual_(UsualExperience(plan)),
      // A second pass knows all about them, and one quantiser needs no knowledge.
      tries_(pass.first_report.empty() && rate.finest < rate.coarsest),
      allocator_(rate_, usual_,
                 pass.first_report.empty() ? std::vector<codecs::PlannedGop>()
                                           : codecs::PlanGops(rate_, pass.first_report)) {
    if (workers_ == 1) {
        own_work_ = std::make_unique<Work>();
        return;
    }
    for (std::size_t i = 0; i < workers_; ++i) threads_.emplace_back([this] { WorkAlong(); });
}

GopVideoEncoder::~GopVideoEncoder() {
    {
        const std::lock_guard lock(mutex_);
        cancelled_ = true;
        work_.notify_all();
    }
    for (std::thread& thread : threads_) thread.join();
}

bool GopVideoEncoder::Encode(AVFrame& frame, const CodedFrameSink& sink) {
    FrameHandle own = frames_.Get();
    av_frame_move_ref(own.get(), &frame);
    if (tries_) Try(*own);
    Lock lock(mutex_);
    return Place(lock, std::move(own), sink);
}

bool GopVideoEncoder::Finish(const CodedFrameSink& sink) {
    Lock lock(mutex_);
    CloseGop(end_);
    CodeAlong(lock);
    if (!HandOnUntil(lock, sink, [this] { return gops_.empty(); })) return false;
    if (!last_.bytes) return true;
    // The last picture stays for those that were dropped after it.
    last_.duration = std::max(last_.duration, end_ - last_.pts);
    return sink(std::move(last_));
}

// Codes the first frame to nowhere, so that the first GOPs know what they have before them.
void GopVideoEncoder::Try(const AVFrame& frame) {
    tries_ = false;
    Gop gop;
    gop.start = {frame.pts};
    codecs::RateAllocator unknowing(rate_, usual_);
    gop.control.emplace(rate_, unknowing.Open(gop_length_.Seconds()));
    Work work;
    work.gop = &gop;
    FrameHandle copy = frames_.Get();
    CheckAv(av_frame_ref(copy.get(), &frame), "Encoding of the picture failed");
    GopFrame tried{.frame = std::move(copy), .intra_cost = IntraCostOf(frame)};
    Code(work, tried, {.kind = PictureKind::kI});
    allocator_.LearnTrial(gop.control->Result());
}

bool GopVideoEncoder::Place(Lock& lock, FrameHandle frame, const CodedFrameSink& sink) {
    const Ticks time{frame->pts};
    if (gops_.empty() || gops_.back()->closed || time - gops_.back()->start >= gop_length_) {
        CloseGop(time);
        CodeAlong(lock);
        if (!HandOnUntil(lock, sink, [this] { return MayOpenGop(); })) return false;
        OpenGop(time);
    }
    if (held_ >= most_held_ && !HandOnUntil(lock, sink, [this] { return held_ <= few_held_; }))
        return false;
    end_ = time + Ticks{frame->pkt_duration};
    gops_.back()->waiting.push_back(std::move(frame));
    ++held_;
    work_.notify_all();
    CodeAlong(lock);
    return HandOn(lock, sink);
}

void GopVideoEncoder::CloseGop(Ticks end) {
    if (gops_.empty() || gops_.back()->closed) return;
    Gop& gop = *gops_.back();
    gop.length = end - gop.start;
    gop.closed = true;
    work_.notify_all();
}

bool GopVideoEncoder::MayOpenGop() const {
    const std::int64_t needed = allocator_.Needs();
    std::size_t at_work = 0;
    for (const std::unique_ptr<Gop>& gop : gops_) {
        if (gop->done) continue;
        if (gop->index <= needed) return false;
        ++at_work;
    }
    return at_work < workers_;
}

void GopVideoEncoder::OpenGop(Ticks start) {
    auto gop = std::make_unique<Gop>();
    gop->index = next_index_++;
    gop->start = start;
    gop->length = gop_length_;
    if (length_ > start) gop->length = std::min(gop->length, length_ - start);
    const bool last = length_ > start && start + gop->length >= length_;
    gop->control.emplace(rate_, allocator_.Open(gop->length.Seconds(), last));
    gops_.push_back(std::move(gop));
}

// What the oldest GOP has ready, then the next one's.
bool GopVideoEncoder::HandOn(Lock& lock, const CodedFrameSink& sink) {
    for (;;) {
        RethrowFailure();
        if (gops_.empty()) return true;
        Gop& oldest = *gops_.front();
        if (!oldest.coded.empty()) {
            CodedFrame next = std::move(oldest.coded.front());
            oldest.coded.pop_front();
            if (keeps_last_) std::swap(next, last_);
            if (!next.bytes) continue;
            lock.unlock();
            const bool wanted = sink(std::move(next));
            lock.lock();
            if (!wanted) return false;
        } else if (oldest.done) {
            if (rate_.steady)
                report_.push_back({oldest.length.Seconds(), std::move(oldest.pictures)});
            gops_.pop_front();
        } else {
            return true;
        }
    }
}

bool GopVideoEncoder::MayHandOn() const {
    return !gops_.empty() && (gops_.front()->done || gops_.front()->coded.size() >= kBurst);
}

template <typename Ready>
bool GopVideoEncoder::HandOnUntil(Lock& lock, const CodedFrameSink& sink, Ready&& ready) {
    for (;;) {
        if (!HandOn(lock, sink)) return false;
        if (ready()) return true;
        worked_.wait(lock, [&] { return failure_ || ready() || MayHandOn(); });
    }
}

void GopVideoEncoder::RethrowFailure() const {
    if (failure_) std::rethrow_exception(failure_);
}

void GopVideoEncoder::WorkAlong() {
    Work work;
    Lock lock(mutex_);
    try {
        for (;;) {
            work_.wait(lock, [&] { return cancelled_ || failure_ || HasWork(work); });
            if (cancelled_ || failure_) return;
            CodeNext(lock, work);
        }
    } catch (...) {
        if (!lock.owns_lock()) lock.lock();
        if (!failure_) failure_ = std::current_exception();  // others may only follow from it
        work_.notify_all();
        worked_.notify_one();
    }
}

GopVideoEncoder::Gop* GopVideoEncoder::NextGop() const {
    for (const std::unique_ptr<Gop>& gop : gops_)
        if (!gop->taken) return gop.get();
    return nullptr;
}

// Where there is one worker, the caller's thread does its work.
void GopVideoEncoder::CodeAlong(Lock& lock) {
    if (!own_work_) return;
    while (HasWork(*own_work_)) CodeNext(lock, *own_work_);
}

bool GopVideoEncoder::HasWork(const Work& work) const {
    if (work.gop == nullptr) return NextGop() != nullptr;
    return work.gop->closed || work.next.size() + work.gop->waiting.size() >= Wanted(work);
}

// Frames to choose from: before the first picture is coded there can be no B picture.
std::size_t GopVideoEncoder::Wanted(const Work& work) const {
    const int frames = 1 + ahead_ + (work.before ? b_pictures_ : 0);
    return static_cast<std::size_t>(frames);
}

// A worker whose GOP has not ended keeps so many, however long nothing comes.
std::size_t GopVideoEncoder::FewestHeld() const {
    return static_cast<std::size_t>(ahead_) + static_cast<std::size_t>(b_pictures_);
}

// A picture that others refer to and those before it, or to the end of a GOP whose frames are all
// coded.
void GopVideoEncoder::CodeNext(Lock& lock, Work& work) {
    if (work.gop == nullptr) {
        work.gop = NextGop();
        work.gop->taken = true;
    }
    Gop& gop = *work.gop;
    while (work.next.size() < Wanted(work) && !gop.waiting.empty()) {
        work.next.push_back({std::move(gop.waiting.front()), work.taken++});
        gop.waiting.pop_front();
    }
    if (work.next.size() == Wanted(work) || (gop.closed && !work.next.empty())) {
        const std::size_t before = work.next.size();
        lock.unlock();
        std::vector<Outcome> outcomes = CodeMiniGop(work);
        lock.lock();
        held_ -= before - work.next.size();
        for (Outcome& outcome : outcomes) Note(gop, std::move(outcome));
    } else if (gop.closed) {
        EndGop(gop);
        FrameHandle latest = std::move(work.latest);
        work = {};
        // The next GOP of a recording may show the same.
        if (rate_.sharpens) work.latest = std::move(latest);
    }
    if (held_ <= few_held_ || MayHandOn()) worked_.notify_one();
}

// A second pass has them where the first one had, so that what pictures took then they take again.
std::size_t GopVideoEncoder::ChooseBPictures(Work& work) const {
    const std::size_t first = work.next.front().index;
    if (const std::optional<std::size_t> found = work.gop->control->FoundB(first))
        return std::min(*found, work.next.size() - 1);
    return static_cast<std::size_t>(
        work.coder->ChooseBPictures(Pointers(nullptr, work.next), static_cast<int>(first)));
}

std::vector<GopVideoEncoder::Outcome> GopVideoEncoder::CodeMiniGop(Work& work) const {
    if (!work.coder) work.coder = make_coder_(work.gop->control->VbvRoom());
    // What is recorded has nothing ahead, which is not to say that nothing will refer to it.
    GopCoder* const shown = ahead_ > 0 ? work.coder.get() : nullptr;
    for (; work.judged < work.next.size(); ++work.judged)
        Judge(work.next[work.judged], work.latest, shown, frames_);
    work.all = work.next.size() < Wanted(work);
    std::vector<Outcome> outcomes;
    std::size_t b_count = 0;
    if (b_pictures_ > 0 && work.before && work.next.size() > 1) b_count = ChooseBPictures(work);
    const auto last = work.next.begin() + static_cast<std::ptrdiff_t>(b_count);
    const PictureKind kind = work.before ? PictureKind::kP : PictureKind::kI;
    const std::size_t first = work.next.front().index;
    const bool follows = work.before && work.before_index + 1 == first;
    const std::vector<const AVFrame*> beside =
        Pointers(follows ? work.before.get() : nullptr, work.next);
    // What stands before it refers to more than it: nobody could start from it.
    outcomes.push_back(Code(work, *last,
                            {.kind = kind,
                             .may_be_i = b_count == 0,
                             .beside = beside,
                             .first_beside = static_cast<int>(first) - (follows ? 1 : 0)}));
    if (!outcomes.front().coded.bytes) {
        // The first one goes, so that time passes until there is room for one to refer to.
        last->decided = false;
        work.next.erase(work.next.begin());
        --work.judged;
        return outcomes;
    }
    for (std::size_t i = 0; i < b_count; ++i)
        outcomes.push_back(Code(work, work.next[i],
                                {.kind = PictureKind::kB,
                                 .b_index = static_cast<int>(i) + 1,
                                 .b_count = static_cast<int>(b_count)}));
    work.next.erase(work.next.begin(), last + 1);
    work.judged -= b_count + 1;
    return outcomes;
}

GopVideoEncoder::Outcome GopVideoEncoder::Code(Work& work, GopFrame& frame,
                                               PictureRequest request) const {
    codecs::GopRateControl& control = *work.gop->control;
    const bool is_b = request.kind == PictureKind::kB;
    const Ticks time{frame.frame->pts};
    Outcome outcome;
    outcome.index = frame.index;
    outcome.coded.pts = outcome.coded.dts = time;
    outcome.coded.duration = {frame.frame->pkt_duration};
    // What others stand before comes when the picture before them is shown.
    if (b_pictures_ > 0 && !is_b && work.before) outcome.coded.dts = work.before_time;

    request.index = static_cast<int>(frame.index);
    frame.decided = true;
    codecs::RatedPicture picture = Rated(frame, request.kind, work.next);
    picture.seconds = (outcome.coded.dts - work.gop->start).Seconds();
    if (!is_b && !work.next.empty())
        picture.needed_seconds = (Ticks{work.next.front().frame->pts} - work.gop->start).Seconds();
    if (ahead_ > 0) {
        ListWaiting(work.next, work.gop->start, work.waiting);
        picture.waiting = work.waiting;
        picture.last = work.all;
    }
    const codecs::GopRateControl::Decision decision = control.Decide(picture);
    outcome.dropped = {1, static_cast<std::int64_t>(decision.expected_bits / 8)};
    if (decision.drop) return outcome;
    request.quantiser = decision.quantiser;
    std::optional<CodedPicture> coded = Fitted(work, *frame.frame, request);
    if (!coded) {
        control.Dropped();
        return outcome;
    }
    outcome.found = control.Coded(coded->bits, coded->Size(), request.quantiser, coded->key);
    outcome.coded.bytes = std::move(coded->bytes);
    outcome.coded.key = coded->key;
    outcome.dropped = {};
    if (!is_b) {
        work.before_time = time;
        work.before_index = frame.index;
        work.past = std::exchange(work.before, std::move(frame.frame));
        if (b_pictures_ == 0)
            work.past.reset();
        else if (work.past)
            ReleaseChroma(*work.past);
    }
    return outcome;
}

// With `request.quantiser` as coarse as the VBV demands; nothing when it is too large
// at every quantiser.
std::optional<CodedPicture> GopVideoEncoder::Fitted(Work& work, AVFrame& frame,
                                                    PictureRequest& request) const {
    codecs::GopRateControl& control = *work.gop->control;
    if (!work.coder) work.coder = make_coder_(control.VbvRoom());
    CodedPicture coded = work.coder->Encode(frame, request);
    if (!work.coder->Recodes()) return coded;
    for (;;) {
        const double better = control.Reconsidered(request.quantiser, coded.bits, coded.Size());
        if (better == request.quantiser) break;
        request.quantiser = better;
        coded = work.coder->Recode(frame, request);
    }
    for (int recoded = 0; !control.Fits(coded.Size(), request.quantiser); ++recoded) {
        if (request.quantiser >= rate_.most_coarse) {
            work.coder->Forget();
            return {};
        }
        request.quantiser = recoded < kMostRecoded
                                ? control.Coarser(request.quantiser, coded.Size())
                                : rate_.most_coarse;
        coded = work.coder->Recode(frame, request);
    }
    return coded;
}

void GopVideoEncoder::Note(Gop& gop, Outcome outcome) {
    dropped_.frames += outcome.dropped.frames;
    dropped_.bytes += outcome.dropped.bytes;
    if (!outcome.coded.bytes) return;
    gop.coded.push_back(std::move(outcome.coded));
    if (!rate_.steady) return;
    if (gop.pictures.size() <= outcome.index) gop.pictures.resize(outcome.index + 1);
    gop.pictures[outcome.index] = outcome.found;
}

void GopVideoEncoder::EndGop(Gop& gop) {
    codecs::GopResult result = gop.control->Result();
    result.seconds = gop.length.Seconds();
    allocator_.Close(gop.index, result);
    gop.done = true;
}

DroppedFrames GopVideoEncoder::TakeDroppedFrames() {
    const std::lock_guard lock(mutex_);
    return std::exchange(dropped_, {});
}

std::vector<codecs::FirstPassGop> GopVideoEncoder::TakeFirstPass() {
    const std::lock_guard lock(mutex_);
    return std::move(report_);
}

}  // namespace engine
