// The pixels and the part of them that a desktop's screen comes with.
#pragma once

#include <spa/param/video/raw.h>

#include <array>
#include <optional>

#include "engine/base/av/av_ptr.h"
#include "engine/base/pixel_box.h"
#include "engine/plan/screen_area.h"

namespace engine {

struct ScreenFormat {
    spa_video_format spa;
    AVPixelFormat pixels;
};

/// Four bytes a pixel each, the best first. A screen lies behind all, so that its alpha means
/// nothing.
// clang-format off
inline constexpr std::array<ScreenFormat, 4> kScreenFormats = {{
    {SPA_VIDEO_FORMAT_BGRx, AV_PIX_FMT_BGR0},
    {SPA_VIDEO_FORMAT_BGRA, AV_PIX_FMT_BGR0},
    {SPA_VIDEO_FORMAT_RGBx, AV_PIX_FMT_RGB0},
    {SPA_VIDEO_FORMAT_RGBA, AV_PIX_FMT_RGB0},
}};
// clang-format on

inline constexpr int kScreenPixelBytes = 4;

/// AV_PIX_FMT_NONE for what was not offered.
AVPixelFormat PixelsOf(spa_video_format format);

/// The recorded part of a buffer of that size, which the sender says to show the `shown` part of
/// only: what lies outside is cut off. Empty when nothing of the area is there.
PixelBox PartOf(const PixelBox& buffer, const std::optional<PixelBox>& shown,
                const ScreenArea& area);

/// Where in a mapped memory of that size the pixels are. Nothing when rows that long are not there.
struct PixelRows {
    std::size_t offset = 0;  // of the upper left pixel
    int stride = 0;          // bytes from row to row, above 0
};
std::optional<PixelRows> RowsOf(const PixelBox& buffer, std::size_t memory_bytes,
                                std::size_t chunk_offset, int chunk_stride);

}  // namespace engine
