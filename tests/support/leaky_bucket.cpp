#include "support/leaky_bucket.h"

#include <algorithm>
#include <stdexcept>

#include "support/asf_reader.h"

namespace test_support {
namespace {

// Whether Windows Media Video 9 may have B pictures: bits 25 to 27 of its sequence
// header say how many.
bool IsReordered(const asf_reader::StreamProperties& stream) {
    return stream.four_cc == "WMV3" && (stream.extra_data.at(3) >> 4 & 7) != 0;
}

}  // namespace

double FullestBucket(const std::string& file, double rate_bps) {
    const asf_reader::File read = asf_reader::ReadFile(file);
    const auto stream = std::find_if(read.header.streams.begin(), read.header.streams.end(),
                                     [](const auto& row) { return !row.audio; });
    if (stream == read.header.streams.end()) throw std::runtime_error("no pictures in " + file);
    double level = 0;
    double fullest = 0;
    double before = 0;  // milliseconds
    for (std::size_t i = 0; i < read.objects.size(); ++i) {
        const asf_reader::MediaObject& picture = read.objects[i];
        if (picture.stream != stream->number) continue;
        double now = picture.presentation_ms;
        // A player keeps one back, so the time that is written is that of the picture before; a
        // key picture's own is written with the one after it.
        if (picture.key && IsReordered(*stream) && i + 1 < read.objects.size())
            now = std::max<double>(now, read.objects[i + 1].presentation_ms);
        level = std::max(0.0, level - (now - before) / 1000 * rate_bps);
        level += 8.0 * static_cast<double>(picture.bytes.size());
        fullest = std::max(fullest, level);
        before = now;
    }
    return fullest;
}

}  // namespace test_support
