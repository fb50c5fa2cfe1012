// Parts a stream of pictures in closed GOPs and codes several of them side by side.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "codecs/common/gop_rate_control.h"
#include "codecs/common/rate_allocator.h"
#include "engine/base/av/encoder.h"
#include "engine/encoders/gop_coder.h"
#include "engine/encoders/gop_frames.h"
#include "engine/encoders/make_encoder.h"
#include "engine/plan/encode_plan.h"

namespace engine {

/// The packets are the same for any number of workers: where GOPs begin follows from the frames'
/// times, and what a GOP is given from GOPs that are ready whatever the number.
class GopVideoEncoder final : public VideoEncoder {
  public:
    /// @param b_pictures  the most consecutive B pictures
    /// @param lookahead   pictures that the coder wants to know beyond the one that it codes
    GopVideoEncoder(const VideoPlan& plan, const codecs::RateSettings& rate,
                    const EncoderPass& pass, VideoFrameFormat format, StreamHeader header,
                    GopCoderMaker make_coder, int b_pictures = 0, int lookahead = 0);
    ~GopVideoEncoder() override;

    VideoFrameFormat Format() const override { return format_; }
    StreamHeader Header() const override { return header_; }
    bool CodesAside() const override { return workers_ > 1; }
    /// The packet of a recorded frame follows at once; else it may take some frames. Blocks while
    /// as many frames wait as the workers need to stay busy.
    bool Encode(AVFrame& frame, const CodedFrameSink& sink) override;
    bool Finish(const CodedFrameSink& sink) override;
    DroppedFrames TakeDroppedFrames() override;
    std::vector<codecs::FirstPassGop> TakeFirstPass() override;

  private:
    // Everything in it but `control`, which the GOP's worker has for itself, is under the lock.
    struct Gop {
        std::int64_t index = 0;
        Ticks start;
        Ticks length;  // expected; once it is closed, what it came to
        bool closed = false;
        bool taken = false;  // by a worker
        bool done = false;
        std::deque<FrameHandle> waiting;
        std::deque<CodedFrame> coded;
        std::vector<codecs::FoundPicture> pictures;  // as shown
        std::optional<codecs::GopRateControl> control;
    };
    struct Work;     // what a worker has at hand for one GOP
    struct Outcome;  // of one frame

    using Lock = std::unique_lock<std::mutex>;
    void Try(const AVFrame& frame);
    bool Place(Lock& lock, FrameHandle frame, const CodedFrameSink& sink);
    void CloseGop(Ticks end);
    bool MayOpenGop() const;
    bool MayHandOn() const;
    void OpenGop(Ticks start);
    bool HandOn(Lock& lock, const CodedFrameSink& sink);
    template <typename Ready>
    bool HandOnUntil(Lock& lock, const CodedFrameSink& sink, Ready&& ready);
    void RethrowFailure() const;

    void WorkAlong();
    Gop* NextGop() const;
    bool HasWork(const Work& work) const;
    void CodeNext(Lock& lock, Work& work);
    void CodeAlong(Lock& lock);
    std::size_t Wanted(const Work& work) const;
    std::size_t FewestHeld() const;
    std::size_t ChooseBPictures(Work& work) const;
    std::vector<Outcome> CodeMiniGop(Work& work) const;
    Outcome Code(Work& work, GopFrame& frame, PictureRequest request) const;
    std::optional<CodedPicture> Fitted(Work& work, AVFrame& frame, PictureRequest& request) const;
    void Note(Gop& gop, Outcome outcome);
    void EndGop(Gop& gop);

    const VideoFrameFormat format_;
    const StreamHeader header_;
    const GopCoderMaker make_coder_;
    const int b_pictures_;  // the most consecutive B pictures
    const int ahead_;       // pictures that wait so that what comes is known
    const codecs::RateSettings rate_;
    const Ticks gop_length_;
    const Ticks length_;  // of the stream; 0 = unknown
    // A frame is handed on when the next one is known or there is none. Not of a recording, which
    // somebody may be watching.
    const bool keeps_last_;
    const std::size_t workers_;
    const std::size_t most_held_;  // frames
    const std::size_t few_held_;   // once so many were, more come when no more than these are
    const codecs::RateExperience usual_;
    mutable FramePool frames_;
    bool tries_;  // the first frame

    std::mutex mutex_;
    std::condition_variable worked_;  // for the caller's thread
    std::condition_variable work_;    // for the workers
    codecs::RateAllocator allocator_;
    std::deque<std::unique_ptr<Gop>> gops_;  // whose packets have not all been handed on
    std::int64_t next_index_ = 0;
    std::size_t held_ = 0;  // frames of all GOPs that have not been coded
    Ticks end_;             // of the last frame
    CodedFrame last_;       // that is kept
    DroppedFrames dropped_;
    std::vector<codecs::FirstPassGop> report_;
    std::exception_ptr failure_;
    bool cancelled_ = false;
    std::unique_ptr<Work> own_work_;  // of the caller's thread, where there is one worker
    std::vector<std::thread> threads_;
};

}  // namespace engine
