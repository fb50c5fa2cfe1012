#include "engine/sources/files/media_probe.h"

#include <cmath>
#include <utility>

#include "engine/sources/files/av_times.h"
#include "engine/sources/files/open_media.h"

namespace engine {
namespace {

Ticks DurationOf(const OpenMedia& media, const AVStream& stream) {
    if (stream.duration <= 0) return media.Length();
    return TicksOf(stream.duration, stream.time_base);
}

Ratio PixelAspect(const OpenMedia& media) {
    const AVRational aspect =
        av_guess_sample_aspect_ratio(media.format.get(), media.video, nullptr);
    if (aspect.num <= 0 || aspect.den <= 0) return {1, 1};
    return {aspect.num, aspect.den};
}

std::string HdrName(AVColorTransferCharacteristic transfer) {
    if (transfer == AVCOL_TRC_SMPTE2084) return "PQ";
    if (transfer == AVCOL_TRC_ARIB_STD_B67) return "HLG";
    return {};
}

// A frame that its file turns by a quarter is encoded upright.
bool QuarterTurned(const AVStream& stream) {
    const std::uint8_t* matrix =
        av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
    if (matrix == nullptr) return false;
    const double turn = av_display_rotation_get(reinterpret_cast<const std::int32_t*>(matrix));
    const double rest = std::fabs(std::remainder(turn, 180.0));
    return rest > 45.0;
}

}  // namespace

MediaFileInfo ProbeMediaFile(const std::string& path) {
    const OpenMedia media = OpenMediaFile(path);
    MediaFileInfo info;
    if (media.audio != nullptr) {
        const AVCodecParameters& codec = *media.audio->codecpar;
        info.audio = AudioInfo{codec.sample_rate, codec.ch_layout.nb_channels,
                               DurationOf(media, *media.audio)};
    }
    if (media.video != nullptr) {
        const AVCodecParameters& codec = *media.video->codecpar;
        VideoInfo video;
        video.width = codec.width;
        video.height = codec.height;
        video.pixel_aspect = PixelAspect(media);
        if (QuarterTurned(*media.video)) {
            std::swap(video.width, video.height);
            std::swap(video.pixel_aspect.numerator, video.pixel_aspect.denominator);
        }
        video.still = media.still;
        video.hdr = HdrName(codec.color_trc);
        if (!media.still) {
            video.frame_rate = NominalFrameRate(*media.video);
            video.duration = DurationOf(media, *media.video);
        }
        info.video = video;
    }
    return info;
}

}  // namespace engine
