#include "engine/sources/screen/damage_boxes.h"

#include <limits>

namespace engine {

void DamageBoxes::Add(PixelBox box) {
    if (box.IsEmpty()) return;
    for (;;) {
        auto partner = boxes_.end();
        std::int64_t least =
            boxes_.size() < kMost ? kRequestCost : std::numeric_limits<std::int64_t>::max();
        for (auto each = boxes_.begin(); each != boxes_.end(); ++each) {
            const std::int64_t cost = Around(*each, box).Pixels() - each->Pixels() - box.Pixels();
            if (cost >= least) continue;
            least = cost;
            partner = each;
        }
        if (partner == boxes_.end()) break;
        // What has grown may be worth joining with others now.
        box = Around(*partner, box);
        *partner = boxes_.back();
        boxes_.pop_back();
    }
    boxes_.push_back(box);
}

std::int64_t DamageBoxes::Pixels() const {
    std::int64_t sum = 0;
    for (const PixelBox& each : boxes_) sum += each.Pixels();
    return sum;
}

}  // namespace engine
