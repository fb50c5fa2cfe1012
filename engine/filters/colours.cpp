#include "engine/filters/colours.h"

#include <fmt/format.h>

namespace engine {
namespace {

// The sizes from which on players expect the colours of high definition.
constexpr int kHdWidth = 1280;
constexpr int kMostSdHeight = 576;

bool IsHdr(AVColorTransferCharacteristic transfer) {
    return transfer == AVCOL_TRC_SMPTE2084 || transfer == AVCOL_TRC_ARIB_STD_B67;
}

bool IsWide(AVColorPrimaries primaries) {
    return primaries == AVCOL_PRI_BT2020 || primaries == AVCOL_PRI_SMPTE431 ||
           primaries == AVCOL_PRI_SMPTE432;
}

bool IsRgb(int format) {
    const AVPixFmtDescriptor* pixels = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(format));
    return pixels != nullptr && (pixels->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0;
}

}  // namespace

AVColorSpace AssumedMatrix(int width, int height) {
    return width >= kHdWidth || height > kMostSdHeight ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
}

const char* MatrixName(AVColorSpace matrix) {
    return matrix == AVCOL_SPC_BT709 ? "bt709" : "bt601";
}

void CompleteColours(AVFrame& frame) {
    const bool hdr = IsHdr(frame.color_trc);
    if (hdr && frame.color_primaries == AVCOL_PRI_UNSPECIFIED)
        frame.color_primaries = AVCOL_PRI_BT2020;
    if (IsWide(frame.color_primaries) && frame.color_trc == AVCOL_TRC_UNSPECIFIED)
        frame.color_trc = AVCOL_TRC_BT709;
    if (IsRgb(frame.format) || frame.colorspace != AVCOL_SPC_UNSPECIFIED) return;
    frame.colorspace = hdr || frame.color_primaries == AVCOL_PRI_BT2020
                           ? AVCOL_SPC_BT2020_NCL
                           : AssumedMatrix(frame.width, frame.height);
}

bool HasColoursOf(const FrameShape& shape, AVColorSpace matrix) {
    const bool same = shape.space == matrix ||
                      (shape.space == AVCOL_SPC_BT470BG && matrix == AVCOL_SPC_SMPTE170M);
    return same && shape.range != AVCOL_RANGE_JPEG && GamutChain(shape).empty();
}

// White of a film is 203 candela per square metre in PQ and HLG (ITU-R BT.2408). The curve leaves
// the lower third of that range as it is, where faces are, and bends what is above.
std::string GamutChain(const FrameShape& shape) {
    if (IsHdr(shape.transfer))
        return "zscale=t=linear:npl=203,format=gbrpf32le,zscale=p=bt709,tonemap=mobius,"
               "zscale=t=bt709:m=bt709:r=tv,format=yuv444p,";
    if (IsWide(shape.primaries)) return "zscale=p=bt709:t=bt709:m=bt709:r=tv,format=yuv444p,";
    return {};
}

}  // namespace engine
