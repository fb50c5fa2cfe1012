#include "engine/sources/files/file_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <limits>
#include <system_error>
#include <utility>

#include "engine/base/av/av_error.h"
#include "engine/sources/files/av_times.h"
#include "engine/sources/files/cut_off.h"
#include "engine/sources/files/stated_size.h"

namespace engine {
namespace {

// How far before the begin mark a key frame is looked for, in turn; after that the file is decoded
// from its beginning. Some: audio decoders need packets before the first whole one. More: a file
// without an index is entered anywhere.
constexpr Ticks kLeadIns[] = {Ticks::FromMilliseconds(500), Ticks::FromMilliseconds(12'000)};
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
    BeginTimes(media_.origin);
    if (input_.mark_in.count <= 0 || media_.still) return;
    for (const Ticks lead_in : kLeadIns) {
        if (SeekBeforeStart(lead_in) && CanDecodeStart()) {
            BeginTimes(Start());
            return;
        }
        read_ahead_.clear();
        Open();
    }
}

void FileReader::BeginTimes(Ticks begin) {
    const bool is_spliced = (media_.format->iformat->flags & AVFMT_TS_DISCONT) != 0;
    times_.emplace(media_.origin, begin, media_.Length(), is_spliced);
}

void FileReader::Open() {
    media_ = OpenMediaFile(input_.path, &interrupt_);
    ended_ = false;
    unwanted_end_ = {};
    for (const MediaKind kind : {MediaKind::Audio, MediaKind::Video}) {
        if (!Wants(kind)) continue;
        AVStream* stream = kind == MediaKind::Audio ? media_.audio : media_.video;
        if (stream == nullptr)
            throw platform::Error(platform::kInvalidData,
                                  fmt::format("{}: it holds no {}", input_.path,
                                              kind == MediaKind::Audio ? "sound" : "picture"));
        stream->discard = AVDISCARD_DEFAULT;
        // Where only the length of all streams is stated, all tell whether the file is as long.
        if (stream->duration > 0 || media_.StatedLength(*stream).count == 0) continue;
        for (AVStream* other : {media_.audio, media_.video})
            if (other != nullptr) other->discard = AVDISCARD_DEFAULT;
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
            if (TicksOf(time, stream.time_base) > Start()) return false;
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
            NoteUnwanted(*packet);
            av_packet_unref(packet.get());
        } else if (result == AVERROR_EOF) {
            ended_ = true;
            return false;
        } else if (result == AVERROR_EXIT) {
            return false;
        } else if (result == AVERROR_INVALIDDATA || result == AVERROR(EAGAIN) ||
                   result == AVERROR(EPERM)) {
            if (++broken > kMostBrokenReads) {
                ended_ = true;
                return false;
            }
        } else {
            throw AvError(result, fmt::format("Reading {} failed", input_.path));
        }
    }
    return false;
}

void FileReader::NoteUnwanted(const AVPacket& packet) {
    const AVStream& stream = *media_.format->streams[packet.stream_index];
    if (packet.pts == AV_NOPTS_VALUE) return;
    const Ticks time = TicksOf(packet.pts, stream.time_base);
    unwanted_end_ = std::max(unwanted_end_, time - media_.origin);
}

void FileReader::CorrectTimes(AVPacket& packet) {
    const AVStream& stream = *media_.format->streams[packet.stream_index];
    const auto ticks = [&](std::int64_t time) {
        return time == AV_NOPTS_VALUE ? std::optional<Ticks>() : TicksOf(time, stream.time_base);
    };
    const PacketTimes before{ticks(packet.pts), ticks(packet.dts),
                             ticks(packet.duration).value_or(Ticks{})};
    PacketTimes after = before;
    times_->Correct(&stream == media_.audio ? MediaKind::Audio : MediaKind::Video, after);
    // What is right stays as it is, to the last digit of its own count.
    const auto correct = [&](std::int64_t& time, std::optional<Ticks> was,
                             std::optional<Ticks> is) {
        if (was == is) return;
        time = is ? av_rescale_q(is->count, kTicksBase, stream.time_base) : AV_NOPTS_VALUE;
    };
    correct(packet.pts, before.pts, after.pts);
    correct(packet.dts, before.dts, after.dts);
    if (after.duration != before.duration) packet.duration = 0;
}

std::string FileReader::LeapText() const {
    const std::optional<SourceTimes::Leap>& leap = times_->FirstLeap();
    if (!leap) return {};
    return fmt::format(
        "{}: its times leap by {:.1f} seconds at {:.1f} seconds; they go on as if the "
        "leap were not there",
        input_.path, leap->by.Seconds(), leap->at.Seconds());
}

std::string FileReader::CutOffText(MediaKind kind, Ticks decoded) const {
    if (!ended_ || media_.still) return {};
    const AVStream& stream = Stream(kind);
    SourceEnd end;
    end.decoded = decoded + input_.mark_in;
    end.read = times_->Last(kind) - media_.origin;
    end.whole = end.decoded;
    if (stream.duration <= 0)
        end.whole =
            std::max({end.decoded, unwanted_end_, times_->Last(MediaKind::Audio) - media_.origin,
                      times_->Last(MediaKind::Video) - media_.origin});
    end.stated = media_.StatedLength(stream);
    std::error_code error;
    const std::uint64_t bytes = std::filesystem::file_size(input_.path, error);
    if (!error) end.bytes = bytes;
    if (!error) end.stated_bytes = StatedBytes(input_.path).value_or(0);
    return engine::CutOffText(input_.path, end);
}

void FileReader::Route(PacketHandle packet, PacketRouter& router) {
    CorrectTimes(*packet);
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
