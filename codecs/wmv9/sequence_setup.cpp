#include "codecs/wmv9/sequence_setup.h"

#include <algorithm>
#include <cmath>

#include "codecs/wmv9/b_fractions.h"
#include "codecs/wmv9/preset.h"

namespace codecs::wmv9 {
namespace {

constexpr int kLargestSide = 8192;

}  // namespace

EncoderSettings Checked(EncoderSettings settings) {
    const auto even = [](int side) { return std::clamp(side, 2, kLargestSide) & ~1; };
    settings.width = even(settings.width);
    settings.height = even(settings.height);
    settings.threads = std::max(1, settings.threads);
    settings.b_pictures = settings.profile == Profile::Simple
                              ? 0
                              : std::clamp(settings.b_pictures, 0, kMostBPictures);
    return settings;
}

int VectorRange(const EncoderSettings& settings) {
    if (settings.profile == Profile::Simple) return 0;
    if (settings.width >= 1280 || settings.height >= 720) return 2;
    return settings.height > 400 ? 1 : 0;
}

SequenceHeader MakeSequence(const EncoderSettings& settings) {
    SequenceHeader header;
    header.profile = settings.profile;
    const bool main = settings.profile == Profile::Main;
    header.loop_filter = main;
    header.short_chroma_vectors = !main;
    header.extended_vectors = VectorRange(settings) > 0;
    header.varying_quantiser = main && settings.adaptive;
    header.overlap = main && PresetOf(settings.preset).overlap;
    header.most_b_pictures = settings.b_pictures;
    header.rate_hint =
        std::clamp(static_cast<int>(std::lround((settings.pictures_per_second - 2) / 4)), 0, 7);
    header.bits_hint = std::clamp(static_cast<int>((settings.rate_bps / 1000 - 32) / 64), 0, 31);
    return header;
}

}  // namespace codecs::wmv9
