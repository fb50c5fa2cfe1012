#include "codecs/wma/block_layout.h"

#include <algorithm>
#include <cstddef>

namespace codecs::wma {
namespace {

void Split(const std::vector<bool>& attacks, std::size_t begin, std::size_t length, int halvings,
           int sizes, std::vector<int>& layout) {
    const auto first = attacks.begin() + static_cast<std::ptrdiff_t>(begin);
    const auto end = first + static_cast<std::ptrdiff_t>(length);
    if (length <= 1 || halvings + 1 == sizes || std::find(first, end, true) == end) {
        layout.push_back(halvings);
        return;
    }
    Split(attacks, begin, length / 2, halvings + 1, sizes, layout);
    Split(attacks, begin + length / 2, length / 2, halvings + 1, sizes, layout);
}

}  // namespace

std::vector<int> BlockLayout(const std::vector<bool>& attacks, int sizes) {
    std::vector<int> layout;
    Split(attacks, 0, attacks.size(), 0, sizes, layout);
    return layout;
}

}  // namespace codecs::wma
