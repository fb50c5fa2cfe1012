// What a picture depends on beside its samples.
#pragma once

#include <array>

#include "codecs/wmv9/activity.h"
#include "codecs/wmv9/b_fractions.h"
#include "codecs/wmv9/picture_tools.h"

namespace codecs::wmv9 {

/// The tables that the last picture of a kind was written with.
struct Tables {
    int vector = 0;
    int pattern = 0;
    int ac = 0;
    int luma_ac = 0;
    int dc = 0;

    static Tables Of(const PictureHeader& header) {
        return {header.vector_table, header.pattern_table, header.ac_table, header.luma_ac_table,
                header.dc_table};
    }
    void ApplyTo(PictureHeader& header) const {
        header.vector_table = vector;
        header.pattern_table = pattern;
        header.ac_table = ac;
        header.luma_ac_table = luma_ac;
        header.dc_table = dc;
    }
};

/// As the pictures so far have left it.
struct CodingState {
    int earlier = -1;  // anchors; -1 = none
    int later = -1;
    int earlier_number = -1;  // in the look-ahead; -1 = not there
    int later_number = -1;
    bool later_is_i = false;
    int later_grid = 0;
    Brightness later_brightness;
    int mapped = -1;  // the picture that the later one was predicted from; -1 = the earlier one
    int rounding = 1;
    int counter = 0;
    Tables tables[3];
    double quantiser = 0;  // of the later anchor
    PictureTools tools;    // that suited the last P picture that was tried
    int until_tools = 0;   // P pictures until the next trial
    int tools_distance = 0;
    // Of so many B pictures in a row, as a part of P pictures' alone; 0 = unknown.
    std::array<double, kMostBPictures + 1> b_costs{};
    int b_pictures = 0;  // in a row that cost the least
    int until_b = 0;     // pictures until the next trial
    int b_distance = 0;
};

}  // namespace codecs::wmv9
