// Reads the container's little-endian numbers and GUIDs from bytes that may end anywhere.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "engine/outputs/asf/byte_writer.h"

namespace engine::asf {

/// Past the end every value is 0 and Failed is true from then on, so that a run of values is read
/// first and checked once.
class ByteReader {
  public:
    explicit ByteReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    std::uint8_t U8() { return static_cast<std::uint8_t>(Number(1)); }
    std::uint16_t U16() { return static_cast<std::uint16_t>(Number(2)); }
    std::uint32_t U32() { return static_cast<std::uint32_t>(Number(4)); }
    std::uint64_t U64() { return Number(8); }
    Guid Id() {
        Guid guid{U32(), U16(), U16(), {}};
        for (std::uint8_t& byte : guid.rest) byte = U8();
        return guid;
    }
    /// @param bytes  0..8; 0 reads nothing and gives 0
    std::uint64_t Number(std::size_t bytes) {
        std::uint64_t value = 0;
        const std::span<const std::uint8_t> from = Bytes(bytes);
        for (std::size_t i = 0; i < from.size(); ++i) value |= std::uint64_t{from[i]} << (8 * i);
        return value;
    }
    /// Empty when there are not so many left.
    std::span<const std::uint8_t> Bytes(std::uint64_t count) {
        if (failed_ || count > Left()) {
            failed_ = true;
            return {};
        }
        const auto taken = bytes_.subspan(place_, static_cast<std::size_t>(count));
        place_ += static_cast<std::size_t>(count);
        return taken;
    }
    void Skip(std::uint64_t count) { Bytes(count); }

    bool Failed() const { return failed_; }
    std::size_t Place() const { return place_; }
    std::size_t Left() const { return bytes_.size() - place_; }

  private:
    std::span<const std::uint8_t> bytes_;
    std::size_t place_ = 0;
    bool failed_ = false;
};

}  // namespace engine::asf
