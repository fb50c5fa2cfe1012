// Samples of full range from red, green and blue (ITU-R BT.601), in sixteen bits of fraction.
#pragma once

namespace codecs::screen {

constexpr int kLumaOfRed = 19595;
constexpr int kLumaOfGreen = 38470;
constexpr int kLumaOfBlue = 7471;

constexpr int kBlueOfRed = -11058;
constexpr int kBlueOfGreen = -21710;
constexpr int kBlueOfBlue = 32768;

constexpr int kRedOfRed = 32768;
constexpr int kRedOfGreen = -27439;
constexpr int kRedOfBlue = -5329;

constexpr int kHalf = 1 << 15;
constexpr int kMiddle = 128 << 16;  // a difference of nothing

}  // namespace codecs::screen
