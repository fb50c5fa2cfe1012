#include "codecs/wmv9/preset.h"

#include <iterator>

namespace codecs::wmv9 {
namespace {

constexpr unsigned kWhole = ShapeBit(Shape::Whole8x8);

// Chosen by hand on vtest.avi, tree.avi and the generated clips of bench/quality: how many bits
// each step saves for its time.
// clang-format off
constexpr Preset kPresets[] = {
    // up_to quarter hadamard rounds hexagon square frac  4mv   intra  rd  rd-intra shapes     from skip overlap ahead power tools filter thorough B
    {   9,   false,  false,    6,    true,   false,  1,  false, false, false, false,  kWhole,      0,  32,  false,  0,  0,  0,    0,  false,  false},
    {  29,   false,  true,     8,    true,   false,  2,  false, false, true,  true,   kWhole,      0,  24,  true,  16,  4,  0.42, 0,  false,  false},
    {  49,   true,   true,    12,    true,   false,  2,  false, true,  true,  true,   kAllShapes, 30,  16,  true,  16,  4,  0.45, 6,  true,   false},
    {  69,   true,   true,    16,    true,   false,  2,  true,  true,  true,  true,   kAllShapes, 20,  12,  true,  16,  6,  0.5,  6,  true,   false},
    { 100,   true,   true,    32,    true,   true,   3,  true,  true,  true,  true,   kAllShapes,  0,  12,  true,  16,  6,  0.5,  3,  true,   true},
};
// clang-format on

}  // namespace

const Preset& PresetOf(int level) {
    const Preset* row = std::begin(kPresets);
    while (row + 1 != std::end(kPresets) && level > row->up_to) ++row;
    return *row;
}

}  // namespace codecs::wmv9
