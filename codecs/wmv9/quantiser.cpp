#include "codecs/wmv9/quantiser.h"

#include <cmath>

#include "codecs/common/index.h"
#include "codecs/wmv9/tables.h"

namespace codecs::wmv9 {
namespace {

// Of the squared step, what a bit is worth. Chosen by hand on the clips of bench/quality.
constexpr double kLambda = 0.26;
constexpr double kLambdaB = 0.26;

}  // namespace

Quantiser Quantiser::Make(int number, int step, bool b_picture) {
    Quantiser made;
    made.number = number;
    made.step = step;
    made.dc_step = kDcStep[Index(number)];
    const int step_eighths = step * kEighths;
    made.reciprocal = static_cast<std::uint32_t>(((1 << 16) + step_eighths - 1) / step_eighths);
    const double lambda = (b_picture ? kLambdaB : kLambda) * step * step;
    made.lambda = std::llround(lambda * kErrorOfSquaredSample);
    made.search_lambda = static_cast<std::uint32_t>(std::lround(16 * std::sqrt(lambda / 0.85)));
    return made;
}

}  // namespace codecs::wmv9
