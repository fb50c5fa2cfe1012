#include "codecs/wmv9/kernels.h"

#include <vector>

#include "codecs/wmv9/kernels_plain.h"

namespace codecs::wmv9 {

std::span<const Kernels> AllKernels() {
    static const std::vector<Kernels> kernels = {PlainKernels()};
    return kernels;
}

const Kernels& BestKernels() { return AllKernels().back(); }

}  // namespace codecs::wmv9
