#include "engine/sources/files/stated_size.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <fstream>
#include <span>
#include <string_view>
#include <vector>

namespace engine {
namespace {

constexpr std::size_t kMostHeaderBytes = 1 << 16;
// Writers to a pipe cannot go back: they leave the most that the field holds, or nearly.
constexpr std::uint64_t kLeastUnknown = 0x7FFFF000;

// clang-format off
constexpr std::array<std::uint8_t, 16> kAsfHeader = {
    0x30, 0x26, 0xB2, 0x75, 0x8E, 0x66, 0xCF, 0x11, 0xA6, 0xD9, 0x00, 0xAA, 0x00, 0x62, 0xCE, 0x6C};
constexpr std::array<std::uint8_t, 16> kAsfFileProperties = {
    0xA1, 0xDC, 0xAB, 0x8C, 0x47, 0xA9, 0xCF, 0x11, 0x8E, 0xE4, 0x00, 0xC0, 0x0C, 0x20, 0x53, 0x65};
// clang-format on
// In the File Properties Object.
constexpr std::size_t kFileSizePlace = 40;
constexpr std::size_t kFlagsPlace = 88;
constexpr std::size_t kFilePropertiesBytes = 104;
constexpr std::uint64_t kBroadcastFlag = 1;

using Bytes = std::span<const std::uint8_t>;

std::uint64_t LittleEndian(Bytes bytes) {
    std::uint64_t value = 0;
    for (std::size_t i = bytes.size(); i-- > 0;) value = value << 8 | bytes[i];
    return value;
}

std::uint64_t BigEndian(Bytes bytes) {
    std::uint64_t value = 0;
    for (const std::uint8_t byte : bytes) value = value << 8 | byte;
    return value;
}

bool Begins(Bytes bytes, std::string_view with) {
    return bytes.size() >= with.size() && std::equal(with.begin(), with.end(), bytes.begin());
}

std::optional<std::uint64_t> ChunkBytes(std::uint64_t size) {
    constexpr std::uint64_t kChunkHeaderBytes = 8;
    if (size == 0 || size >= kLeastUnknown) return std::nullopt;
    return size + kChunkHeaderBytes;
}

std::optional<std::uint64_t> AsfBytes(Bytes header) {
    const auto found = std::search(header.begin(), header.end(), kAsfFileProperties.begin(),
                                   kAsfFileProperties.end());
    const Bytes properties = header.subspan(static_cast<std::size_t>(found - header.begin()));
    if (properties.size() < kFilePropertiesBytes) return std::nullopt;
    const std::uint64_t size = LittleEndian(properties.subspan(kFileSizePlace, 8));
    const std::uint64_t flags = LittleEndian(properties.subspan(kFlagsPlace, 4));
    if (size == 0 || (flags & kBroadcastFlag) != 0) return std::nullopt;
    return size;
}

}  // namespace

std::optional<std::uint64_t> StatedBytes(const std::string& path) {
    std::vector<std::uint8_t> head(kMostHeaderBytes);
    std::ifstream in(path, std::ios::binary);
    in.read(reinterpret_cast<char*>(head.data()), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<std::size_t>(std::max<std::streamsize>(in.gcount(), 0)));
    if (head.size() < kAsfHeader.size()) return std::nullopt;
    const Bytes bytes(head);
    if (Begins(bytes, "RIFF")) return ChunkBytes(LittleEndian(bytes.subspan(4, 4)));
    if (Begins(bytes, "FORM")) return ChunkBytes(BigEndian(bytes.subspan(4, 4)));
    if (std::equal(kAsfHeader.begin(), kAsfHeader.end(), bytes.begin())) return AsfBytes(bytes);
    return std::nullopt;
}

}  // namespace engine
