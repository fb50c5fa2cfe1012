#include "codecs/wmv9/effort.h"

#include <iterator>

namespace codecs::wmv9 {
namespace {

constexpr unsigned kWhole = ShapeBit(Shape::Whole8x8);

// clang-format off
constexpr Effort kEfforts[] = {
    // up_to quarter hadamard rounds hexagon square frac  four  intra  joint  j-intra shapes     from skip fades  ahead trials
    {   9,   false,  false,    4,    false,  false,  1,  false, false, false, false,  kWhole,      0,  32,  true,  0,    1},
    {  29,   true,   false,    8,    false,  false,  1,  false, false, false, false,  kWhole,      0,  24,  true,  1,    1},
    {  49,   true,   true,    16,    true,   false,  1,  false, false, false, true,   kWhole,      0,  16,  true,  2,    1},
    {  69,   true,   true,    16,    true,   false,  2,  true,  true,  true,  true,   kAllShapes, 12,  12,  true,  3,    2},
    {  89,   true,   true,    24,    true,   true,   2,  true,  true,  true,  true,   kAllShapes,  6,   8,  true,  4,    3},
    { 100,   true,   true,    32,    true,   true,   3,  true,  true,  true,  true,   kAllShapes,  0,   3,  true,  6,    4},
};
// clang-format on

}  // namespace

const Effort& EffortOf(int level) {
    const Effort* row = std::begin(kEfforts);
    while (row + 1 != std::end(kEfforts) && level > row->up_to) ++row;
    return *row;
}

}  // namespace codecs::wmv9
