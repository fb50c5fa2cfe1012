#include "engine/pipeline/pass.h"

#include <algorithm>
#include <new>
#include <utility>

#include "engine/base/av/av_error.h"
#include "engine/pipeline/mixed_audio.h"

namespace engine {
namespace {

template <typename Action>
class AtExit {
  public:
    explicit AtExit(Action action) : action_(std::move(action)) {}
    ~AtExit() { action_(); }
    AtExit(const AtExit&) = delete;
    AtExit& operator=(const AtExit&) = delete;

  private:
    Action action_;
};

// Session time at which a stream ends; 0 = with its source.
Ticks EndOf(const InputPlan& input, Ticks pass_end) {
    if (input.mark_out.count <= 0) return pass_end;
    const Ticks marked = input.mark_out - input.mark_in;
    return pass_end.count > 0 ? std::min(marked, pass_end) : marked;
}

// Degrees clockwise by which a stream says that it is to be shown turned.
double TurnOf(const AVStream& stream) {
    const std::uint8_t* matrix =
        av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
    if (matrix == nullptr) return 0;
    const double turn = -av_display_rotation_get(reinterpret_cast<const std::int32_t*>(matrix));
    return turn == turn ? turn : 0;  // a matrix may be none
}

}  // namespace

Pass::FileFeed::FileFeed(MediaKind kind, Input& from, const std::string& path, FramePool& frames)
    : input(from), decoder(from.reader->Stream(kind), from.reader->Start(), path, frames) {}

Pass::Pass(const EncodePlan& plan, const EncoderPass& number, Ticks end, const RunParts& parts,
           CodedFramePool& packets, RunStatistics& statistics, Events events)
    : plan_(plan),
      parts_(parts),
      statistics_(statistics),
      events_(std::move(events)),
      packets_(packets) {
    if (plan.IsLive()) captured_.emplace(plan.audio.has_value(), plan.video.has_value());
    if (plan.audio) {
        audio_encoder_ = MakeAudioEncoder(*plan.audio, number, packets_);
        const InputPlan& from = plan.audio->input;
        const bool shared = plan.video && plan.video->input == from;
        Feed(audio_.emplace(Chain{MediaKind::Audio}), from, true, shared);
        resampler_.emplace(audio_encoder_->Format(), plan.audio->downmix,
                           from.capture ? AudioClock::Capture : AudioClock::Media, EndOf(from, end),
                           stop_, frames_);
    }
    if (plan.video) {
        video_encoder_ = MakeVideoEncoder(*plan.video, number, packets_);
        const InputPlan& from = plan.video->input;
        Feed(video_.emplace(Chain{MediaKind::Video}), from, false, true);
        const double turn =
            from.capture ? 0 : TurnOf(video_->file->input.reader->Stream(MediaKind::Video));
        video_filters_.emplace(*plan.video, video_encoder_->Format(), EndOf(from, end), turn, stop_,
                               frames_);
    }
    if (plan.IsStreamed() && !plan.IsLive()) pacer_.emplace();
    interleaver_ = std::make_unique<Interleaver>(
        plan.audio.has_value(), plan.video.has_value(), plan.IsLive(), plan.IsStreamed(),
        [this] { return inputs_.size() == 1 && inputs_.front()->router.Starved(); });
}

Pass::~Pass() {
    Stop();
    Join();
}

void Pass::Feed(Chain& chain, const InputPlan& plan, bool with_audio, bool with_video) {
    if (plan.capture)
        chain.device = OpenDevice(*plan.capture);
    else
        chain.file = std::make_unique<FileFeed>(chain.kind, InputFor(plan, with_audio, with_video),
                                                plan.path, frames_);
}

std::unique_ptr<LiveSource> Pass::OpenDevice(const CapturePlan& plan) {
    std::unique_ptr<LiveSource> device = parts_.open_live(plan, frames_);
    if (plan.mixed_id.empty()) return device;
    CapturePlan other = plan;
    other.id = plan.mixed_id;
    return std::make_unique<MixedAudio>(std::move(device), parts_.open_live(other, frames_),
                                        frames_);
}

Pass::Input& Pass::InputFor(const InputPlan& plan, bool with_audio, bool with_video) {
    for (const std::unique_ptr<Input>& input : inputs_)
        if (input->reader->Input() == plan) return *input;
    auto input = std::make_unique<Input>();
    input->reader = std::make_unique<FileReader>(plan, with_audio, with_video, read_);
    if (!with_audio) input->router.Cancel(MediaKind::Audio);
    if (!with_video) input->router.Cancel(MediaKind::Video);
    inputs_.push_back(std::move(input));
    return *inputs_.back();
}

std::vector<StreamHeader> Pass::Headers() const {
    std::vector<StreamHeader> headers;
    if (audio_encoder_) headers.push_back(audio_encoder_->Header());
    if (video_encoder_) headers.push_back(video_encoder_->Header());
    return headers;
}

template <typename Body>
void Pass::Guard(Body&& body) {
    try {
        body();
    } catch (const platform::Error& error) {
        Fail(error);
    } catch (const std::bad_alloc&) {
        Fail({platform::kUnspecified, "There is not enough memory; close other programs"});
    } catch (const std::exception& error) {
        Fail({platform::kUnspecified, error.what()});
    }
}

void Pass::Fail(const platform::Error& error) {
    events_.failed(error);  // before the stop, which may make others fail
    Stop();
}

void Pass::Run(void (Pass::*stage)(Chain&), Chain& chain) {
    threads_.emplace_back([this, stage, &chain] { Guard([&] { (this->*stage)(chain); }); });
}

void Pass::Start(RunOutputs* outputs) {
    for (const std::unique_ptr<Input>& input : inputs_)
        threads_.emplace_back([this, from = input.get()] { Guard([&] { Read(*from); }); });
    if (audio_) {
        if (audio_->device) Run(&Pass::Capture, *audio_);
        Run(&Pass::ProcessAudio, *audio_);
    }
    if (video_) {
        Run(video_->device ? &Pass::Capture : &Pass::DecodeVideo, *video_);
        if (!video_encoder_->CodesAside()) Run(&Pass::QueueVideo, *video_);
        Run(&Pass::EncodeVideo, *video_);
    }
    threads_.emplace_back([this, outputs] {
        Guard([&] { Write(outputs); });
        events_.ended();
    });
}

void Pass::Stop() {
    std::int64_t running = 0;
    if (captured_) stopped_at_.compare_exchange_strong(running, parts_.now().count);
    stop_ = true;
    gate_.OpenForGood();
    if (pacer_) pacer_->Stop();
    for (const std::unique_ptr<Input>& input : inputs_) input->reader->Stop();
    for (const std::optional<Chain>* chain : {&audio_, &video_})
        if (*chain && (*chain)->device) (*chain)->device->Wake();
}

void Pass::SetPaused(bool paused) {
    if (pacer_) pacer_->SetPaused(paused);
    if (!captured_)
        gate_.SetClosed(paused);
    else if (paused)
        captured_->Pause(parts_.now());
    else
        captured_->Resume(parts_.now());
}

void Pass::Join() {
    for (std::thread& thread : threads_) thread.join();
    threads_.clear();
}

void Pass::Read(Input& input) {
    input.reader->Run(input.router);
    const std::string leap = input.reader->LeapText();
    if (!leap.empty()) events_.noted(leap);
}

void Pass::Capture(Chain& chain) {
    const AtExit end([&] { captured_->Finish(chain.kind); });
    try {
        FrameHandle frame;
        while (chain.device->Read(frame)) {
            if (!captured_->Push(chain.kind, std::move(frame))) return;
            if (chain.kind != MediaKind::Video) continue;
            const std::int64_t missed = chain.device->TakeMissed();
            if (!captured_->IsPaused())
                statistics_.Missed(&platform::DropCounts::capture_late, missed);
            statistics_.Missed(&platform::DropCounts::encoder_late, captured_->TakeDropped());
        }
    } catch (const platform::Error& error) {
        Stop();
        events_.lost(error);
    }
}

// A file that ends too early is lost as a device is: what it gave is good, and is kept.
void Pass::JudgeEnd(const FileFeed& file, MediaKind kind) {
    if (stop_) return;
    const std::string text = file.input.reader->CutOffText(kind, file.decoder.End());
    if (!text.empty()) events_.lost({platform::kInvalidData, text});
}

// Hands on all that the stream's source gives. False when no more is wanted.
bool Pass::Drain(Chain& chain, const FrameSink& next) {
    if (chain.file) {
        PacketHandle packet;
        while (chain.file->input.router.Pop(chain.kind, packet))
            if (!chain.file->decoder.Decode(packet.get(), next)) return false;
        if (!chain.file->decoder.Decode(nullptr, next)) return false;
        JudgeEnd(*chain.file, chain.kind);
        return true;
    }
    const bool audio = chain.kind == MediaKind::Audio;
    const InputPlan& input = audio ? plan_.audio->input : plan_.video->input;
    FrameHandle frame;
    while (captured_->Pop(chain.kind, frame)) {
        frame->pts -= input.mark_in.count;
        if (!audio) frame->pkt_duration = 1000 * Ticks::kPerSecond / CodedFrameRate(*plan_.video);
        if (!next(std::move(frame))) return false;
    }
    return true;
}

void Pass::CancelSource(Chain& chain) {
    if (chain.file)
        chain.file->input.router.Cancel(chain.kind);
    else
        captured_->Cancel(chain.kind);
}

// In session time.
Ticks Pass::LiveEnd() const {
    const std::optional<Ticks> start = captured_ ? captured_->Start() : std::nullopt;
    if (!start || !stop_) return {};
    return captured_->Recorded(Ticks{stopped_at_}) - *start - plan_.video->input.mark_in;
}

CodedFrameSink Pass::ToInterleaver(MediaKind kind) {
    return [this, kind](CodedFrame frame) {
        gate_.Wait();
        yielded_ = true;
        frame.stream = kind == MediaKind::Video && plan_.audio ? 1 : 0;
        return interleaver_->Push(kind, std::move(frame));
    };
}

// Audio is little work: one thread does all of it.
void Pass::ProcessAudio(Chain& chain) {
    const AtExit end([&] {
        interleaver_->Finish(chain.kind);
        CancelSource(chain);
    });
    const CodedFrameSink to_interleaver = ToInterleaver(chain.kind);
    const FrameSink encode = [&](FrameHandle frame) {
        return audio_encoder_->Encode(*frame, to_interleaver);
    };
    const FrameSink filter = [&](FrameHandle frame) {
        return resampler_->Push(std::move(frame), encode);
    };
    if (Drain(chain, filter)) resampler_->Finish(encode);
    audio_encoder_->Finish(to_interleaver);
    first_audio_ = audio_encoder_->TakeFirstPass();
    const std::string note = audio_encoder_->NoteText();
    if (!note.empty()) events_.noted(note);
}

void Pass::DecodeVideo(Chain& chain) {
    const AtExit end([&] {
        decoded_.Finish();
        CancelSource(chain);
    });
    Drain(chain, [this](FrameHandle frame) { return decoded_.Push(std::move(frame)); });
}

void Pass::FilterVideo(Chain& chain, const FrameSink& next) {
    const AtExit end([&] {
        if (chain.file)
            decoded_.Cancel();
        else
            CancelSource(chain);
    });
    const FrameSink filter = [&](FrameHandle frame) {
        return video_filters_->Push(std::move(frame), next);
    };
    bool wanted = true;
    if (chain.file) {
        FrameHandle frame;
        while (wanted && decoded_.Pop(frame)) wanted = filter(std::move(frame));
    } else {
        wanted = Drain(chain, filter);
    }
    if (!wanted || !video_filters_->Finish(next)) return;
    if (chain.device) video_filters_->HoldUntil(LiveEnd(), next);
}

void Pass::QueueVideo(Chain& chain) {
    const AtExit end([&] { filtered_.Finish(); });
    FilterVideo(chain, [this](FrameHandle frame) { return filtered_.Push(std::move(frame)); });
}

// A thread that would only hand frames to the encoder's own threads filters them as well.
void Pass::EncodeVideo(Chain& chain) {
    const AtExit end([&] {
        interleaver_->Finish(chain.kind);
        filtered_.Cancel();
    });
    const CodedFrameSink to_interleaver = ToInterleaver(chain.kind);
    const FrameSink encode = [&](FrameHandle frame) {
        const bool wanted = video_encoder_->Encode(*frame, to_interleaver);
        statistics_.Dropped(video_encoder_->TakeDroppedFrames());
        return wanted;
    };
    if (video_encoder_->CodesAside()) {
        FilterVideo(chain, encode);
    } else {
        FrameHandle frame;
        while (filtered_.Pop(frame) && encode(std::move(frame))) continue;
    }
    video_encoder_->Finish(to_interleaver);
    statistics_.Dropped(video_encoder_->TakeDroppedFrames());
    first_report_ = video_encoder_->TakeFirstPass();
}

void Pass::Write(RunOutputs* outputs) {
    const AtExit end([&] { interleaver_->Cancel(); });
    MediaKind kind = MediaKind::Audio;
    CodedFrame frame;
    for (;;) {
        const Interleaver::Popped popped = interleaver_->Pop(kind, frame);
        if (popped == Interleaver::Popped::End) return;
        if (popped != Interleaver::Popped::Frame) {
            if (outputs == nullptr) continue;
            if (popped == Interleaver::Popped::Quiet)
                outputs->FlushWatched();
            else
                outputs->Flush();
            continue;
        }
        if (outputs != nullptr) {
            if (pacer_ && !pacer_->Await(frame.dts)) return;
            outputs->Write(frame);
        }
        statistics_.Written(kind, frame);
        frame.bytes = {};
    }
}

}  // namespace engine
