// The arithmetic on samples in plain C++: what every other set of kernels must equal.
#pragma once

#include "codecs/wmv9/kernels.h"

namespace codecs::wmv9 {

Kernels PlainKernels();

}  // namespace codecs::wmv9
