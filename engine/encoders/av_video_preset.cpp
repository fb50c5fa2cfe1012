#include "engine/encoders/av_video_preset.h"

#include <iterator>

namespace engine {
namespace {

struct PresetRow {
    std::int32_t up_to;
    int mb_decision;
    int trellis;
    int compare;  // of motion search
    int sub_pixel_quality;
};

// clang-format off
constexpr PresetRow kPresets[] = {
    // up to  macroblock decision  trellis  compare      sub-pixel
    {     19, FF_MB_DECISION_SIMPLE, 0,     FF_CMP_SAD,  2},
    {     60, FF_MB_DECISION_SIMPLE, 0,     FF_CMP_SAD,  8},
    {     79, FF_MB_DECISION_BITS,   0,     FF_CMP_SAD,  8},
    {     94, FF_MB_DECISION_RD,     0,     FF_CMP_SATD, 8},
    {    100, FF_MB_DECISION_RD,     1,     FF_CMP_SATD, 8},
};
// clang-format on

}  // namespace

void ApplyPreset(AVCodecContext& codec, std::int32_t performance) {
    const PresetRow* row = std::begin(kPresets);
    while (row + 1 != std::end(kPresets) && performance > row->up_to) ++row;
    codec.mb_decision = row->mb_decision;
    codec.trellis = row->trellis;
    codec.me_cmp = row->compare;
    codec.me_sub_cmp = row->compare;
    codec.me_subpel_quality = row->sub_pixel_quality;
}

}  // namespace engine
