// Bytes as the container stores them: little-endian numbers, GUIDs and UTF-16 texts.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace engine::asf {

/// A GUID in its printed groups; the last eight bytes are one array in printed order.
struct Guid {
    std::uint32_t first = 0;
    std::uint16_t second = 0;
    std::uint16_t third = 0;
    std::array<std::uint8_t, 8> rest{};
    bool operator==(const Guid&) const = default;
};

/// The UTF-16LE bytes of a UTF-8 text with its terminator: at most 65534 bytes, cut where a
/// character ends, so that every 16-bit length of the container can hold it. Bytes that are no
/// UTF-8 become U+FFFD.
std::vector<std::uint8_t> Utf16(std::string_view text);

/// Appends to a buffer that it owns. Clear keeps the capacity, so a buffer that was reserved once
/// never allocates again.
class ByteWriter {
  public:
    void U8(std::uint8_t value) { bytes_.push_back(value); }
    void U16(std::uint16_t value) { Number(value, 2); }
    void U32(std::uint32_t value) { Number(value, 4); }
    void U64(std::uint64_t value) { Number(value, 8); }
    void I32(std::int32_t value) { U32(static_cast<std::uint32_t>(value)); }
    void Id(const Guid& guid) {
        U32(guid.first);
        U16(guid.second);
        U16(guid.third);
        Bytes(guid.rest);
    }
    void Bytes(std::span<const std::uint8_t> bytes) {
        bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    }
    void Zeros(std::size_t count) { bytes_.resize(bytes_.size() + count); }
    /// An object: its GUID, its size with these 24 bytes, its body.
    void Object(const Guid& guid, const ByteWriter& body) {
        Id(guid);
        U64(24 + body.size());
        Bytes(body.bytes());
    }

    void Clear() { bytes_.clear(); }
    void Reserve(std::size_t count) { bytes_.reserve(count); }
    std::size_t size() const { return bytes_.size(); }
    std::span<const std::uint8_t> bytes() const { return bytes_; }
    std::span<std::uint8_t> bytes() { return bytes_; }

  private:
    void Number(std::uint64_t value, int count) {
        for (int i = 0; i < count; ++i) U8(static_cast<std::uint8_t>(value >> (8 * i)));
    }

    std::vector<std::uint8_t> bytes_;
};

}  // namespace engine::asf
