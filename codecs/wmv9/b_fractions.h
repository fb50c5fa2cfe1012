// Where B pictures stand in time between their two anchors (SMPTE ST 421, 7.1.1.14, BFRACTION).
#pragma once

#include "codecs/common/bit_writer.h"

namespace codecs::wmv9 {

constexpr int kMostBPictures = 3;

struct BFraction {
    int b_pictures;  // consecutive ones
    int b_number;    // among them, from 1 on
    int scale;       // of the way from the earlier anchor to the later one, by 256
    Code code;
};

// clang-format off
constexpr BFraction kBFractions[] = {
    // many number scale code
    {  1,  1,    128,   {0, 3}},
    {  2,  1,     85,   {1, 3}},
    {  2,  2,    170,   {2, 3}},
    {  3,  1,     64,   {3, 3}},
    {  3,  2,    128,   {0, 3}},
    {  3,  3,    192,   {4, 3}},
};
// clang-format on

constexpr const BFraction& FindBFraction(int b_number, int b_pictures) {
    return kBFractions[b_pictures * (b_pictures - 1) / 2 + b_number - 1];
}

constexpr int BScale(int b_number, int b_pictures) {
    return FindBFraction(b_number, b_pictures).scale;
}

}  // namespace codecs::wmv9
