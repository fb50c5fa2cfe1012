#include "engine/outputs/asf/byte_writer.h"

namespace engine::asf {
namespace {

constexpr std::size_t kMaxTextBytes = 65534;  // with the terminator
constexpr char32_t kReplacement = 0xFFFD;

struct Decoded {
    char32_t character = kReplacement;
    std::size_t bytes = 1;
};

/// The first character of a non-empty UTF-8 text. Overlong forms, surrogates and values past
/// U+10FFFF are no characters.
Decoded DecodeFirst(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned lead = byte(0);
    if (lead < 0x80U) return {lead, 1};
    const std::size_t length = lead >= 0xF0U ? 4 : lead >= 0xE0U ? 3 : 2;
    if (lead < 0xC2U || lead > 0xF4U || text.size() < length) return {};
    char32_t character = lead & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80U) return {};
        character = (character << 6) | (byte(i) & 0x3FU);
    }
    const char32_t smallest = length == 4 ? 0x10000 : length == 3 ? 0x800 : 0x80;
    const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
    if (character < smallest || character > 0x10FFFF || surrogate) return {};
    return {character, length};
}

}  // namespace

std::vector<std::uint8_t> Utf16(std::string_view text) {
    ByteWriter out;
    while (!text.empty()) {
        const Decoded next = DecodeFirst(text);
        const std::size_t needed = next.character > 0xFFFF ? 4 : 2;
        if (out.size() + needed + 2 > kMaxTextBytes) break;
        if (needed == 4) {
            const char32_t offset = next.character - 0x10000;
            out.U16(static_cast<std::uint16_t>(0xD800 + (offset >> 10)));
            out.U16(static_cast<std::uint16_t>(0xDC00 + (offset & 0x3FF)));
        } else {
            out.U16(static_cast<std::uint16_t>(next.character));
        }
        text.remove_prefix(next.bytes);
    }
    out.U16(0);
    return {out.bytes().begin(), out.bytes().end()};
}

}  // namespace engine::asf
