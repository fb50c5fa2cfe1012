#include "profiles/encoding_mode.h"

#include <algorithm>
#include <array>
#include <optional>

namespace profiles {

namespace {

struct EncodingMode {
    std::int32_t number;
    std::optional<platform::VbrMode> rate_control;  // none = as the profile has it
    bool two_passes;
};

constexpr std::int32_t kAsItIs = 0;  // one pass at a constant bit rate, unless a profile says else

// clang-format off
constexpr std::array kEncodingModes = {
    //           mode  rate control                two passes
    EncodingMode{1,    std::nullopt,               true},
    EncodingMode{2,    platform::VbrMode::Quality, false},
    EncodingMode{3,    platform::VbrMode::BitRate, true},
    EncodingMode{4,    platform::VbrMode::Peak,    true},
};
// clang-format on

}  // namespace

bool ApplyEncodingMode(std::optional<std::int32_t> mode, platform::WMEncProfile2& profile,
                       platform::WMEncSource& source) {
    if (mode.value_or(kAsItIs) == kAsItIs) return true;
    const auto row = std::ranges::find(kEncodingModes, *mode, &EncodingMode::number);
    if (row == kEncodingModes.end()) return false;
    if (row->rate_control) profile.SetVBRMode(source.Type(), 0, *row->rate_control);
    if (row->two_passes) source.SetPreProcessPass(1);
    return true;
}

}  // namespace profiles
