#include "engine/plan/codec_names.h"

#include <fmt/format.h>

namespace engine {

using platform::VbrMode;

const char* ModeName(VbrMode mode) {
    switch (mode) {
        case VbrMode::Constant:
            return "constant rate";
        case VbrMode::Peak:
            return "peak rate";
        case VbrMode::Quality:
            return "quality";
        case VbrMode::BitRate:
            return "bit rate VBR";
    }
    return "unknown";
}

std::string AudioDisplayName(const AudioCodecRow& row, VbrMode mode) {
    if (!row.modes.Has(mode) && row.modes.Has(VbrMode::Quality))
        return fmt::format("{} (needs -a_mode 2)", row.name);
    return std::string(row.name);
}

}  // namespace engine
