// Where pictures between two anchors stand in time (SMPTE ST 421, 7.1.1.14).
#pragma once

#include "codecs/common/bit_writer.h"

namespace codecs::wmv9 {

constexpr int kMostBetween = 3;

struct BetweenPlace {
    int run;
    int place;
    int scale;  // of the way from the earlier anchor to the later one, by 256
    Code code;
};

// clang-format off
constexpr BetweenPlace kBetweenPlaces[] = {
    // run place scale  code
    {  1,  1,    128,   {0, 3}},
    {  2,  1,     85,   {1, 3}},
    {  2,  2,    170,   {2, 3}},
    {  3,  1,     64,   {3, 3}},
    {  3,  2,    128,   {0, 3}},
    {  3,  3,    192,   {4, 3}},
};
// clang-format on

constexpr const BetweenPlace& FindBetweenPlace(int place, int run) {
    return kBetweenPlaces[run * (run - 1) / 2 + place - 1];
}

constexpr int BetweenScale(int place, int run) { return FindBetweenPlace(place, run).scale; }

}  // namespace codecs::wmv9
