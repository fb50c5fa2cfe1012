#include "codecs/screen/fifteen_bit_encoder.h"

#include <algorithm>

#include "codecs/common/index.h"
#include "codecs/screen/packet.h"

namespace codecs::screen {

FifteenBitEncoder::FifteenBitEncoder(const EncoderSettings& settings) {
    format_.width = settings.width;
    format_.height = settings.height;
    format_.frames_per_second = settings.frames_per_second;
    format_.rate_bps = settings.rate_bps;
    format_.fifteen_bits = true;
}

std::vector<std::uint8_t> FifteenBitEncoder::StreamHeader() const {
    return screen::StreamHeader(format_);
}

// The least rectangle around all that differs from the frame before; a packet has at least a pixel.
Rect FifteenBitEncoder::ChangedArea() const {
    const std::size_t width = Index(format_.width);
    std::size_t left = width;
    std::size_t right = 0;
    Rect area;
    for (int y = 0; y < format_.height; ++y) {
        const auto row = current_.begin() + static_cast<std::ptrdiff_t>(Index(y) * width);
        const auto old = before_.begin() + static_cast<std::ptrdiff_t>(Index(y) * width);
        const auto end = row + format_.width;
        const auto first = std::mismatch(row, end, old).first;
        if (first == end) continue;
        if (area.Empty()) area = {0, y, format_.width, 0};
        area.height = y + 1 - area.y;
        left = std::min(left, static_cast<std::size_t>(first - row));
        std::size_t last = width;
        while (row[static_cast<std::ptrdiff_t>(last) - 1] ==
               old[static_cast<std::ptrdiff_t>(last) - 1])
            --last;
        right = std::max(right, last);
    }
    if (area.height == 0) return {0, 0, 1, 1};
    area.x = static_cast<int>(left);
    area.width = static_cast<int>(right - left);
    return area;
}

CodedFrame FifteenBitEncoder::Encode(std::span<const std::uint16_t> pixels,
                                     const FrameRequest& request) {
    before_.swap(current_);
    current_.assign(pixels.begin(), pixels.end());
    CodedFrame coded;
    coded.key = request.key || before_.empty();
    coded.exact = true;
    if (coded.key) {
        WriteFifteenBitPacket(packet_, format_, {0, 0, format_.width, format_.height}, current_,
                              {});
    } else {
        coded.unchanged = current_ == before_;
        WriteFifteenBitPacket(packet_, format_, ChangedArea(), current_, before_);
    }
    coded.data = packet_;
    return coded;
}

void FifteenBitEncoder::Forget() { current_.swap(before_); }

}  // namespace codecs::screen
