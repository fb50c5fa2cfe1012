#include "engine/sources/files/cut_off.h"

#include <fmt/format.h>

namespace engine {
namespace {

constexpr int kShare = 100;
constexpr Ticks kLeastMissing = Ticks::FromMilliseconds(1'000);
constexpr std::uint64_t kLeastMissingBytes = 4096;

bool IsShort(Ticks found, Ticks expected) {
    const Ticks missing = expected - found;
    return missing > kLeastMissing && missing.count > expected.count / kShare;
}

}  // namespace

std::string CutOffText(const std::string& path, const SourceEnd& end) {
    if (IsShort(end.whole, end.stated))
        return fmt::format(
            "{}: it ends after {:.2f} of the {:.2f} seconds that it states; it is cut off or "
            "damaged",
            path, end.whole.Seconds(), end.stated.Seconds());
    if (IsShort(end.decoded, end.read))
        return fmt::format(
            "{}: after {:.2f} of {:.2f} seconds nothing in it can be decoded; it is damaged", path,
            end.decoded.Seconds(), end.read.Seconds());
    if (end.stated_bytes > end.bytes + kLeastMissingBytes &&
        end.stated_bytes - end.bytes > end.stated_bytes / kShare)
        return fmt::format(
            "{}: it ends after {} of the {} bytes that it states, {:.2f} seconds; it is cut off",
            path, end.bytes, end.stated_bytes, end.whole.Seconds());
    return {};
}

}  // namespace engine
