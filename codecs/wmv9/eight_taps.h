// The interpolation filter of luma of ITU-T H.265, table 8-11.
#pragma once

#include <cstdint>

namespace codecs::wmv9 {

/// At quarters of a sample; the fourth factor belongs to the sample before that place.
inline constexpr std::int16_t kEightTaps[4][8] = {{0, 0, 0, 64, 0, 0, 0, 0},
                                                  {-1, 4, -10, 58, 17, -5, 1, 0},
                                                  {-1, 4, -11, 40, 40, -11, 4, -1},
                                                  {0, 1, -5, 17, 58, -10, 4, -1}};

}  // namespace codecs::wmv9
