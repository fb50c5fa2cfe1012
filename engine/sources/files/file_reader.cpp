#include "engine/sources/files/file_reader.h"

#include <fmt/format.h>

#include <limits>
#include <utility>

#include "engine/base/av/av_error.h"

namespace engine {
namespace {

// How far before the begin mark a key frame is looked for, in turn; after that the file is decoded
// from its beginning. Some: sound decoders need packets before the first whole one. More: a file
// without an index is entered anywhere.
constexpr Ticks kLeadIns[] = {Ticks::FromMilliseconds(500), Ticks::FromMilliseconds(12'000)};
// Timestamps that go back by more, or (in formats that splice streams) leap forward by more, are a
// new count; smaller steps are a stream's own.
constexpr Ticks kLeapBack = Ticks::FromMilliseconds(-500);
constexpr Ticks kLeapForward = Ticks::FromMilliseconds(10'000);
constexpr int kMostBrokenReads = 1000;  // in a row
constexpr std::size_t kMostReadAhead = 4096;

int Interrupted(void* stop) { return static_cast<std::atomic<bool>*>(stop)->load() ? 1 : 0; }

}  // namespace

FileReader::FileReader(InputPlan input, bool want_audio, bool want_video, PacketPool& packets)
    : input_(std::move(input)),
      want_audio_(want_audio),
      want_video_(want_video),
      packets_(packets),
      interrupt_{Interrupted, &stop_} {
    Open();
    if (input_.mark_in.count <= 0 || media_.still) return;
    for (const Ticks lead_in : kLeadIns) {
        if (SeekBeforeStart(lead_in) && CanDecodeStart()) return;
        read_ahead_.clear();
        Open();
    }
}

void FileReader::Open() {
    media_ = OpenMediaFile(input_.path, &interrupt_);
    for (const MediaKind kind : {MediaKind::Audio, MediaKind::Video}) {
        if (!Wants(kind)) continue;
        AVStream* stream = kind == MediaKind::Audio ? media_.audio : media_.video;
        if (stream == nullptr)
            throw platform::Error(platform::kInvalidData,
                                  fmt::format("{}: it holds no {}", input_.path,
                                              kind == MediaKind::Audio ? "sound" : "picture"));
        stream->discard = AVDISCARD_DEFAULT;
    }
}

bool FileReader::Wants(MediaKind kind) const {
    return kind == MediaKind::Audio ? want_audio_ : want_video_;
}

const AVStream& FileReader::Stream(MediaKind kind) const {
    return kind == MediaKind::Audio ? *media_.audio : *media_.video;
}

bool FileReader::SeekBeforeStart(Ticks lead_in) {
    const AVStream& stream = Stream(want_video_ ? MediaKind::Video : MediaKind::Audio);
    const Ticks target = Start() - lead_in;
    if (target <= media_.origin) return false;
    const std::int64_t time = av_rescale_q(target.count, kTicksBase, stream.time_base);
    return avformat_seek_file(media_.format.get(), stream.index,
                              std::numeric_limits<std::int64_t>::min(), time, time, 0) >= 0;
}

// Reads up to the first packet of each wanted stream from which it can be decoded.
bool FileReader::CanDecodeStart() {
    bool audio_open = want_audio_;
    bool video_open = want_video_;
    while (audio_open || video_open) {
        PacketHandle packet = packets_.Get();
        if (read_ahead_.size() == kMostReadAhead || !ReadPacket(packet)) return false;
        const AVStream& stream = *media_.format->streams[packet->stream_index];
        bool& open = &stream == media_.audio ? audio_open : video_open;
        const std::int64_t time = packet->pts != AV_NOPTS_VALUE ? packet->pts : packet->dts;
        if (open && time != AV_NOPTS_VALUE && (packet->flags & AV_PKT_FLAG_KEY) != 0) {
            if (Ticks{av_rescale_q(time, stream.time_base, kTicksBase)} > Start()) return false;
            open = false;
        }
        read_ahead_.push_back(std::move(packet));
    }
    return true;
}

bool FileReader::ReadPacket(PacketHandle& packet) {
    for (int broken = 0; !stop_;) {
        const int result = av_read_frame(media_.format.get(), packet.get());
        if (result >= 0) {
            const AVStream* stream = media_.format->streams[packet->stream_index];
            if ((want_audio_ && stream == media_.audio) || (want_video_ && stream == media_.video))
                return true;
            av_packet_unref(packet.get());
        } else if (result == AVERROR_EOF || result == AVERROR_EXIT) {
            return false;
        } else if (result == AVERROR_INVALIDDATA || result == AVERROR(EAGAIN)) {
            if (++broken > kMostBrokenReads) return false;
        } else {
            throw AvError(result, fmt::format("Reading {} failed", input_.path));
        }
    }
    return false;
}

void FileReader::RepairTimes(AVPacket& packet) {
    const AVStream& stream = *media_.format->streams[packet.stream_index];
    StreamClock& clock = &stream == media_.audio ? audio_clock_ : video_clock_;
    const std::int64_t stamp = packet.dts != AV_NOPTS_VALUE ? packet.dts : packet.pts;
    if (stamp != AV_NOPTS_VALUE) {
        Ticks time = Ticks{av_rescale_q(stamp, stream.time_base, kTicksBase)} + shift_;
        if (clock.started) {
            const Ticks leap = time - clock.next;
            const bool splices = (media_.format->iformat->flags & AVFMT_TS_DISCONT) != 0;
            if (leap < kLeapBack || (splices && leap > kLeapForward)) {
                shift_ = shift_ - leap;
                time = clock.next;
            }
        }
        clock.started = true;
        clock.next = time + Ticks{av_rescale_q(packet.duration, stream.time_base, kTicksBase)};
    }
    const std::int64_t shift = av_rescale_q(shift_.count, kTicksBase, stream.time_base);
    if (packet.pts != AV_NOPTS_VALUE) packet.pts += shift;
    if (packet.dts != AV_NOPTS_VALUE) packet.dts += shift;
}

void FileReader::Route(PacketHandle packet, PacketRouter& router) {
    RepairTimes(*packet);
    const bool audio = media_.format->streams[packet->stream_index] == media_.audio;
    router.Push(audio ? MediaKind::Audio : MediaKind::Video, std::move(packet));
}

void FileReader::Run(PacketRouter& router) {
    struct Finisher {
        PacketRouter& router;
        ~Finisher() { router.Finish(); }
    } const finisher{router};
    for (PacketHandle& packet : read_ahead_) Route(std::move(packet), router);
    read_ahead_.clear();
    while (!router.AllCancelled()) {
        PacketHandle packet = packets_.Get();
        if (!ReadPacket(packet)) return;
        Route(std::move(packet), router);
    }
}

}  // namespace engine
