#include "codecs/wma/attack_detector.h"

#include <algorithm>

#include "codecs/common/index.h"

namespace codecs::wma {
namespace {

constexpr float kRise = 8;           // of the energy of high frequencies, to be an attack
constexpr float kForgetting = 0.6F;  // of the background, from slice to slice
constexpr float kQuiet = 30 * 30;    // mean square of what is too quiet to matter

}  // namespace

void AttackDetector::Find(std::span<const float> samples, std::vector<bool>& attacks) {
    const std::size_t slices = samples.size() / Index(slice_);
    for (std::size_t i = 0; i < slices; ++i) {
        float energy = 0;
        for (const float sample : samples.subspan(i * Index(slice_), Index(slice_))) {
            // What pre-echoes are heard against is low: a second difference leaves the rest.
            const float high = sample - 2 * last_ + before_last_;
            before_last_ = last_;
            last_ = sample;
            energy += high * high;
        }
        const float quiet = kQuiet * static_cast<float>(slice_);
        if (energy > kRise * std::max(background_, quiet / kRise)) attacks[i] = true;
        background_ = std::max(energy * (1 - kForgetting) + background_ * kForgetting,
                               background_ * kForgetting);
    }
}

}  // namespace codecs::wma
