#include "codecs/wma_lossless/encoder.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstddef>
#include <utility>

#include "codecs/common/index.h"
#include "codecs/common/task_team.h"
#include "codecs/wma_lossless/group_coder.h"

namespace codecs::wma_lossless {
namespace {

// Where a stream can be entered, filters start afresh and need some time to learn.
constexpr int kGroupSeconds = 6;
// What of a group candidates code, before the best of them goes on alone.
constexpr int kTrialMs = 1000;

// Samples are left out of a frame, none at its start and so many at its end.
constexpr std::uint32_t kTrimmedAtEnd = 0b101;

}  // namespace

class Encoder::Impl {
  public:
    explicit Impl(const EncoderSettings& settings)
        : format_(settings.format),
          group_frames_(
              std::max(1, kGroupSeconds * format_.SamplingRate() / format_.FrameSamples())),
          trial_frames_(settings.low_delay ? 1
                                           : 1 + kTrialMs * format_.SamplingRate() /
                                                     (1000 * format_.FrameSamples())),
          packetiser_(format_.PacketBytes()),
          team_(settings.threads),
          waiting_(Index(trial_frames_),
                   FrameSamples(Index(format_.Channels()),
                                std::vector<std::int32_t>(Index(format_.FrameSamples())))) {
        const std::span<const Configuration> all = Candidates(format_);
        for (const Configuration& configuration : settings.low_delay ? all.first(1) : all)
            candidates_.emplace_back(configuration, format_);
    }

    void Encode(std::span<const std::int32_t> samples, const PacketSink& sink) {
        const std::size_t channels = Index(format_.Channels());
        assert(samples.size() % channels == 0);
        for (std::size_t i = 0; i < samples.size(); i += channels) {
            for (std::size_t channel = 0; channel < channels; ++channel)
                waiting_[frames_waiting_][channel][filled_] = samples[i + channel];
            if (++filled_ == Index(format_.FrameSamples())) TakeFrame(sink);
        }
    }

    void Finish(const PacketSink& sink) {
        if (filled_ > 0) {
            trimmed_ = format_.FrameSamples() - static_cast<int>(filled_);
            for (std::vector<std::int32_t>& channel : waiting_[frames_waiting_])
                std::fill(channel.begin() + static_cast<std::ptrdiff_t>(filled_), channel.end(), 0);
            TakeFrame(sink);
        }
        if (frames_waiting_ > 0) StartGroup(sink);
        // At the end a decoder tries to make a frame of what is left of the packet: it finds one of
        // which all is left out.
        const auto trim_bits = static_cast<std::uint8_t>(format_.TrimBits());
        const Code filler[] = {{0, static_cast<std::uint8_t>(format_.LengthBits())},
                               {1, 1},  // all channels have one layout
                               {kTrimmedAtEnd, 3},
                               {static_cast<std::uint32_t>(format_.FrameSamples()), trim_bits}};
        packetiser_.Finish(filler, sink);
    }

  private:
    void TakeFrame(const PacketSink& sink) {
        filled_ = 0;
        if (best_ == nullptr) {
            if (++frames_waiting_ == waiting_.size()) StartGroup(sink);
            return;
        }
        best_->Predict(waiting_[0], &team_);
        // Filters that are lost all of a sudden do not find back: others are tried.
        const bool lost = best_->LastIsRaw() && !raw_trial_;
        WriteFrame(trimmed_, sink);
        if (lost) EndGroup();
    }

    // Every candidate codes half of the frames that wait, the best three the others.
    void StartGroup(const PacketSink& sink) {
        std::uint32_t seen = 0;
        for (std::size_t i = 0; i < frames_waiting_; ++i)
            for (const std::vector<std::int32_t>& channel : waiting_[i])
                for (const std::int32_t sample : channel)
                    seen |= static_cast<std::uint32_t>(sample);
        const int zeros = seen == 0 ? 0 : std::countr_zero(seen);
        std::vector<GroupCoder*> racing;
        for (GroupCoder& candidate : candidates_) {
            candidate.Begin(zeros);
            racing.push_back(&candidate);
        }
        const std::size_t half = frames_waiting_ / 2;
        Race(racing, 0, half);
        racing.resize(std::min<std::size_t>(racing.size(), 3));
        Race(racing, half, frames_waiting_);
        best_ = racing.front();
        best_->Settle();
        raw_trial_ = best_->LastIsRaw();
        for (std::size_t left = std::exchange(frames_waiting_, 0); left > 0; --left)
            WriteFrame(left == 1 ? trimmed_ : 0, sink);
    }

    // Frames from `begin` to before `end`; the best comes first then. What they take in the first
    // half of the group so far does not count: they learn then, and not in the rest of the group.
    void Race(std::vector<GroupCoder*>& racing, std::size_t begin, std::size_t end) {
        struct Racer {
            GroupCoder* coder;
            std::int64_t bits;
        };
        std::vector<Racer> racers;
        racers.reserve(racing.size());
        for (GroupCoder* coder : racing) racers.push_back({coder, 0});
        const std::size_t learnt = std::max(begin, end / 2);
        team_.Run(static_cast<int>(racers.size()), [&](int n) {
            auto& [coder, bits] = racers[Index(n)];
            for (std::size_t i = begin; i < end; ++i) {
                if (i == learnt) bits = -coder->Bits();
                coder->Predict(waiting_[i], nullptr);
            }
            bits += coder->Bits();
        });
        std::ranges::stable_sort(racers, {}, &Racer::bits);
        std::ranges::transform(racers, racing.begin(), &Racer::coder);
    }

    void WriteFrame(int trimmed, const PacketSink& sink) {
        content_.Clear();
        content_.Put(1, 1);  // all channels have one layout
        if (trimmed > 0) {
            content_.Put(kTrimmedAtEnd, 3);
            content_.Put(static_cast<std::uint32_t>(trimmed), format_.TrimBits());
        } else {
            content_.Put(0, 1);
        }
        best_->WriteTile(content_);
        content_.Put(1, 1);  // a filler
        wma::Packetiser::Frame frame;
        frame.bits = content_.Size();
        content_.Align();
        frame.bytes.assign(content_.Bytes().begin(), content_.Bytes().end());
        frame.samples = format_.FrameSamples() - trimmed;
        frame.key = group_frame_ == 0;
        packetiser_.Add(std::move(frame), sink);
        ++group_frame_;
        // Where the next frame can be entered, or could not soon: silence has hundreds in a packet.
        if (group_frame_ >= 2 * group_frames_ ||
            (group_frame_ >= group_frames_ && packetiser_.NextStartsFirst()))
            EndGroup();
    }

    void EndGroup() {
        group_frame_ = 0;
        best_ = nullptr;
    }

    StreamFormat format_;
    int group_frames_;
    int trial_frames_;
    wma::Packetiser packetiser_;
    TaskTeam team_;
    std::vector<GroupCoder> candidates_;
    std::vector<FrameSamples> waiting_;
    std::size_t frames_waiting_ = 0;  // whole ones; the next one is being filled
    std::size_t filled_ = 0;
    int trimmed_ = 0;             // at the end of the last frame
    GroupCoder* best_ = nullptr;  // of the group under way
    int group_frame_ = 0;
    bool raw_trial_ = false;  // its filters do not gain anything
    BitWriter content_;
};

Encoder::Encoder(const EncoderSettings& settings) : impl_(std::make_unique<Impl>(settings)) {}
Encoder::~Encoder() = default;

void Encoder::Encode(std::span<const std::int32_t> samples, const PacketSink& sink) {
    impl_->Encode(samples, sink);
}
void Encoder::Finish(const PacketSink& sink) { impl_->Finish(sink); }

}  // namespace codecs::wma_lossless
