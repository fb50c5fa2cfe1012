// One reading of the inputs, from the demuxer or the capturing device to the output, one thread a
// stage.
#pragma once

#include <atomic>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "engine/encoders/make_encoder.h"
#include "engine/filters/audio_resampler.h"
#include "engine/filters/video_filter_chain.h"
#include "engine/pipeline/capture_queues.h"
#include "engine/pipeline/frame_queue.h"
#include "engine/pipeline/interleaver.h"
#include "engine/pipeline/pacer.h"
#include "engine/pipeline/pause_gate.h"
#include "engine/pipeline/run_outputs.h"
#include "engine/pipeline/run_parts.h"
#include "engine/pipeline/run_statistics.h"
#include "engine/plan/encode_plan.h"
#include "engine/sources/files/file_reader.h"
#include "engine/sources/files/packet_router.h"
#include "engine/sources/files/stream_decoder.h"

namespace engine {

/// A stage that ends, for whatever reason, tells its neighbours: nothing that is fed or read by it
/// waits for it.
class Pass {
  public:
    struct Events {
        /// From any of the pass's threads; the pass then ends by itself as after Stop.
        std::function<void(const platform::Error&)> failed;
        /// The same of a source that ends before its time: what it gave before is good.
        std::function<void(const platform::Error&)> lost;
        /// A line about what was read, or how it suits its codec.
        std::function<void(const std::string&)> noted;
        /// From the writer, after the last frame.
        std::function<void()> ended;
    };

    /// Opens inputs and encoders; the pool outlives what the outputs keep. `end` cuts all streams,
    /// 0 = does not. Throws platform::Error.
    Pass(const EncodePlan& plan, const EncoderPass& number, Ticks end, const RunParts& parts,
         CodedFramePool& packets, RunStatistics& statistics, Events events);
    ~Pass();
    Pass(const Pass&) = delete;
    Pass& operator=(const Pass&) = delete;

    /// Audio before video.
    std::vector<StreamHeader> Headers() const;

    /// Coded frames go to `outputs` (which must have begun), or nowhere when it is null.
    void Start(RunOutputs* outputs);
    /// What has been read still goes all the way, also of one that is paused. Any thread.
    void Stop();
    /// While it is so, a file is not read on and what devices give is left out. Any thread, one
    /// call at a time.
    void SetPaused(bool paused);
    void Join();

    /// After Join.
    bool YieldedNothing() const { return !yielded_; }
    const std::vector<codecs::FirstPassGop>& FirstReport() const { return first_report_; }
    const std::vector<float>& FirstAudio() const { return first_audio_; }

  private:
    struct Input {
        std::unique_ptr<FileReader> reader;
        PacketRouter router;
    };
    // What is decoded of a file.
    struct FileFeed {
        FileFeed(MediaKind kind, Input& from, const std::string& path, FramePool& frames);

        Input& input;
        StreamDecoder decoder;
    };
    // Where a stream comes from: either a file feeds it or a device does.
    struct Chain {
        MediaKind kind = MediaKind::Audio;
        std::unique_ptr<FileFeed> file = {};
        std::unique_ptr<LiveSource> device = {};
    };

    void Feed(Chain& chain, const InputPlan& plan, bool with_audio, bool with_video);
    std::unique_ptr<LiveSource> OpenDevice(const CapturePlan& plan);
    Input& InputFor(const InputPlan& plan, bool with_audio, bool with_video);
    void Run(void (Pass::*stage)(Chain&), Chain& chain);
    template <typename Body>
    void Guard(Body&& body);
    void Fail(const platform::Error& error);

    void Read(Input& input);
    void Capture(Chain& chain);
    void JudgeEnd(const FileFeed& file, MediaKind kind);
    bool Drain(Chain& chain, const FrameSink& next);
    void CancelSource(Chain& chain);
    Ticks LiveEnd() const;
    CodedFrameSink ToInterleaver(MediaKind kind);
    void ProcessAudio(Chain& chain);
    void DecodeVideo(Chain& chain);
    void FilterVideo(Chain& chain, const FrameSink& next);
    void QueueVideo(Chain& chain);
    void EncodeVideo(Chain& chain);
    void Write(RunOutputs* outputs);

    const EncodePlan& plan_;
    const RunParts& parts_;
    RunStatistics& statistics_;
    Events events_;
    FramePool frames_;
    PacketPool read_;          // of the inputs
    CodedFramePool& packets_;  // of the encoders
    std::vector<std::unique_ptr<Input>> inputs_;
    std::unique_ptr<AudioEncoder> audio_encoder_;
    std::unique_ptr<VideoEncoder> video_encoder_;
    std::optional<AudioResampler> resampler_;
    std::optional<VideoFilterChain> video_filters_;
    std::optional<CaptureQueues> captured_;  // of a live plan
    std::optional<Chain> audio_, video_;
    FrameQueue decoded_;   // of a file
    FrameQueue filtered_;  // unless the encoder has threads of its own
    std::unique_ptr<Interleaver> interleaver_;
    PauseGate gate_;
    std::optional<Pacer> pacer_;  // of a file that is streamed
    std::atomic<bool> stop_{false};
    std::atomic<std::int64_t> stopped_at_{0};  // on the capture clock
    std::atomic<bool> yielded_{false};
    std::vector<codecs::FirstPassGop> first_report_;
    std::vector<float> first_audio_;
    std::vector<std::thread> threads_;
};

}  // namespace engine
