#include "engine/sources/files/open_media.h"

#include <fmt/format.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

#include "engine/base/av/av_error.h"
#include "engine/sources/files/av_times.h"

namespace engine {
namespace {

// Text files, which libavformat would show as frames of a terminal.
constexpr std::array<std::string_view, 5> kNoMedia = {"tty", "bin", "xbin", "adf", "idf"};

constexpr std::array<AVCodecID, 9> kImageCodecs = {
    AV_CODEC_ID_BMP,   AV_CODEC_ID_MJPEG, AV_CODEC_ID_PNG, AV_CODEC_ID_TIFF,  AV_CODEC_ID_WEBP,
    AV_CODEC_ID_TARGA, AV_CODEC_ID_PPM,   AV_CODEC_ID_PAM, AV_CODEC_ID_JPEGLS};

platform::Error NoMedia(const std::string& path, const char* why) {
    return {platform::kInvalidData, fmt::format("{}: {}; choose a media file", path, why)};
}

// Image demuxers are "image2" and one "..._pipe" a format; a motion JPEG in a container is a film.
bool IsStill(const AVFormatContext& format, const AVStream& video) {
    const std::string_view name = format.iformat->name;
    const bool image_format = name == "image2" || name.ends_with("_pipe");
    return image_format && std::find(kImageCodecs.begin(), kImageCodecs.end(),
                                     video.codecpar->codec_id) != kImageCodecs.end();
}

bool Usable(const AVStream& stream) {
    const AVCodecParameters& codec = *stream.codecpar;
    if ((stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0) return false;
    if (avcodec_find_decoder(codec.codec_id) == nullptr) return false;
    return codec.codec_type == AVMEDIA_TYPE_AUDIO
               ? codec.sample_rate > 0 && codec.ch_layout.nb_channels > 0
               : codec.width > 0 && codec.height > 0;
}

AVStream* Choose(AVFormatContext& format, AVMediaType type) {
    const int best = av_find_best_stream(&format, type, -1, -1, nullptr, 0);
    if (best >= 0 && Usable(*format.streams[best])) return format.streams[best];
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        AVStream* stream = format.streams[i];
        if (stream->codecpar->codec_type == type && Usable(*stream)) return stream;
    }
    return nullptr;
}

Ticks FirstTime(const AVFormatContext& format, std::initializer_list<const AVStream*> streams) {
    std::optional<Ticks> first;
    for (const AVStream* stream : streams) {
        if (stream == nullptr || stream->start_time == AV_NOPTS_VALUE) continue;
        const Ticks start = TicksOf(stream->start_time, stream->time_base);
        first = first ? std::min(*first, start) : start;
    }
    if (first) return *first;
    return format.start_time == AV_NOPTS_VALUE ? Ticks{}
                                               : TicksOf(format.start_time, AV_TIME_BASE_Q);
}

// A pipe would be used up by the first look at it, and waiting for its writer cannot be stopped.
void RefuseWhatIsNoFile(const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code none;
    const fs::file_status there = fs::status(path, none);
    if (fs::is_fifo(there) || fs::is_socket(there) || fs::is_character_file(there))
        throw platform::Error(
            platform::kInvalidArgument,
            fmt::format("{}: it is a pipe or a device; write what it gives to a file and name that",
                        path));
}

// Demuxers say "not permitted" of what they cannot make sense of.
void CheckOpened(int code, const std::string& path) {
    const bool denied = code == AVERROR(EPERM) || code == AVERROR(EACCES);
    if (denied && ::access(path.c_str(), R_OK) == 0) code = AVERROR_INVALIDDATA;
    CheckAv(code, path);
}

}  // namespace

Ticks OpenMedia::Length() const {
    return format->duration > 0 ? TicksOf(format->duration, AV_TIME_BASE_Q) : Ticks{};
}

Ticks OpenMedia::StatedLength(const AVStream& stream) const {
    if (format->duration_estimation_method != AVFMT_DURATION_FROM_STREAM) return {};
    if (stream.duration <= 0) return Length();
    return TicksOf(stream.duration, stream.time_base);
}

OpenMedia OpenMediaFile(const std::string& path, const AVIOInterruptCB* stop) {
    RefuseWhatIsNoFile(path);
    AVFormatContext* raw = CheckAllocated(avformat_alloc_context());
    if (stop != nullptr) raw->interrupt_callback = *stop;
    // "%d" in a frame's name is part of the name; other demuxers do not know the option.
    AVDictionary* raw_options = nullptr;
    av_dict_set(&raw_options, "pattern_type", "none", 0);
    // With the scheme named, no other part of a name can be taken for one.
    const int opened = avformat_open_input(&raw, ("file:" + path).c_str(), nullptr, &raw_options);
    const AvPtr<AVDictionary> options(raw_options);
    CheckOpened(opened, path);

    OpenMedia media;
    media.format.reset(raw);
    AVFormatContext& format = *media.format;
    if (std::find(kNoMedia.begin(), kNoMedia.end(), format.iformat->name) != kNoMedia.end())
        throw NoMedia(path, "it is a text file");
    CheckOpened(avformat_find_stream_info(&format, nullptr), path);
    ::malloc_trim(0);  // what decoders have had to find it out would stay taken
    media.audio = Choose(format, AVMEDIA_TYPE_AUDIO);
    media.video = Choose(format, AVMEDIA_TYPE_VIDEO);
    if (media.audio == nullptr && media.video == nullptr)
        throw NoMedia(path, "it holds neither sound nor picture that can be decoded");
    media.still = media.video != nullptr && IsStill(format, *media.video);
    media.origin = FirstTime(format, {media.audio, media.video});
    for (unsigned i = 0; i < format.nb_streams; ++i) format.streams[i]->discard = AVDISCARD_ALL;
    return media;
}

Ratio NominalFrameRate(const AVStream& stream) {
    AVRational rate = stream.avg_frame_rate;
    if (rate.num <= 0 || rate.den <= 0) rate = stream.r_frame_rate;
    if (rate.num <= 0 || rate.den <= 0) return {0, 1};
    return {rate.num, rate.den};
}

}  // namespace engine
