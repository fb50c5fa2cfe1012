#include "codecs/wmv9/quantiser.h"

#include <cmath>

#include "codecs/common/index.h"
#include "codecs/wmv9/tables.h"

namespace codecs::wmv9 {
namespace {

// Chosen by hand on the clips of bench/quality, see docs/video9.md.
constexpr double kLevelPart = 0.87;     // of what a bit is worth, one of levels
constexpr double kSearchLambda = 0.36;  // of the step, what a bit is worth in absolute differences

}  // namespace

Quantiser Quantiser::Make(int number, int step, double bit_worth) {
    Quantiser made;
    made.number = number;
    made.step = step;
    made.dc_step = kDcStep[Index(number)];
    const int step_eighths = step * kEighths;
    made.reciprocal = static_cast<std::uint32_t>(((1 << 16) + step_eighths - 1) / step_eighths);
    const double lambda = bit_worth * step * step * kErrorOfSquaredSample;
    made.lambda = std::llround(lambda);
    made.level_lambda = std::llround(kLevelPart * lambda);
    made.search_lambda = static_cast<std::uint32_t>(std::lround(16 * kSearchLambda * step));
    return made;
}

Quantiser Quantiser::Beyond(int number, double bit_worth) {
    const double times = static_cast<double>(number) / kCoarsest;
    Quantiser made = Make(kCoarsest, 2 * kCoarsest, times * times * bit_worth);
    made.search_lambda =
        static_cast<std::uint32_t>(std::lround(times * static_cast<double>(made.search_lambda)));
    return made;
}

}  // namespace codecs::wmv9
