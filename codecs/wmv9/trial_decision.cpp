#include "codecs/wmv9/trial_decision.h"

namespace codecs::wmv9 {

// The fourth and fifth sixteenth of the rows of each half.
bool IsTried(int y, int height) {
    const int sixteenth = 16 * y / height % 8;
    return sixteenth == 3 || sixteenth == 4;
}

}  // namespace codecs::wmv9
