#include "engine/outputs/http/history.h"

namespace engine::http {

void History::Add(const LivePacketPtr& packet) {
    if (packet->join_point) {
        packets_.clear();
        bytes_ = 0;
    } else if (packets_.empty()) {
        return;
    }
    packets_.push_back(packet);
    bytes_ += packet->bytes.size();
    if (bytes_ > kMostBytes) packets_.clear();
}

}  // namespace engine::http
