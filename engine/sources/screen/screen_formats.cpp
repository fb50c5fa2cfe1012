#include "engine/sources/screen/screen_formats.h"

namespace engine {

AVPixelFormat PixelsOf(spa_video_format format) {
    for (const ScreenFormat& row : kScreenFormats)
        if (row.spa == format) return row.pixels;
    return AV_PIX_FMT_NONE;
}

PixelBox PartOf(const PixelBox& buffer, const std::optional<PixelBox>& shown,
                const ScreenArea& area) {
    const PixelBox frame = shown && !shown->IsEmpty() ? Intersection(buffer, *shown) : buffer;
    if (area.kind != ScreenArea::Kind::Region) return frame;
    return Intersection(frame, area.region.Moved(frame.x, frame.y));
}

std::optional<PixelRows> RowsOf(const PixelBox& buffer, std::size_t memory_bytes,
                                std::size_t chunk_offset, int chunk_stride) {
    const int least = buffer.width * kScreenPixelBytes;
    const int stride = chunk_stride == 0 ? least : chunk_stride;
    if (buffer.IsEmpty() || stride < least) return std::nullopt;
    const std::size_t bytes =
        static_cast<std::size_t>(stride) * static_cast<std::size_t>(buffer.height - 1) +
        static_cast<std::size_t>(least);
    if (chunk_offset > memory_bytes || bytes > memory_bytes - chunk_offset) return std::nullopt;
    return PixelRows{chunk_offset, stride};
}

}  // namespace engine
