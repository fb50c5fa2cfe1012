#include "engine/plan/pixel_formats.h"

#include "platform/encoder.h"

namespace engine {
namespace {

using platform::FourCC;

// RGB with 16 bits is read as 5 bits a colour, so 5-6-5 cannot be told from it.
// clang-format off
constexpr PixelFormatRow kPixelFormats[] = {
    // code           name      av_name     four_cc         bits step row_step uncompressed
    {FourCC("I420"),  "I420",   "yuv420p",  FourCC("I420"), 12,  2,   2,       true},
    {FourCC("IYUV"),  "IYUV",   "yuv420p",  FourCC("IYUV"), 12,  2,   2,       true},
    {0xE436EB7D,      "RGB24",  "bgr24",    0,              24,  1,   1,       true},
    {0xE436EB7E,      "RGB32",  "bgra",     0,              32,  1,   1,       true},
    {0xE436EB7C,      "RGB555", "rgb555le", 0,              16,  1,   1,       true},
    {0xE436EB7B,      "RGB565", "rgb565le", 0,              16,  1,   1,       false},
    {FourCC("UYVY"),  "UYVY",   "uyvy422",  FourCC("UYVY"), 16,  2,   1,       true},
    {FourCC("YUY2"),  "YUY2",   "yuyv422",  FourCC("YUY2"), 16,  2,   1,       true},
    {FourCC("YV12"),  "YV12",   "yuv420p",  FourCC("YV12"), 12,  2,   2,       true},
    {FourCC("YVU9"),  "YVU9",   "yuv410p",  FourCC("YVU9"), 9,   4,   4,       true},
    {FourCC("YVYU"),  "YVYU",   "yvyu422",  FourCC("YVYU"), 16,  2,   1,       true},
};
// clang-format on

}  // namespace

const PixelFormatRow* FindPixelFormat(std::uint32_t code) {
    for (const PixelFormatRow& row : kPixelFormats)
        if (row.code == code) return &row;
    return nullptr;
}

}  // namespace engine
