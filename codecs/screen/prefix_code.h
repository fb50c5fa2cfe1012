// A prefix code for the symbols of one frame's runs, and how a decoder is told of it.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "codecs/common/bit_writer.h"

namespace codecs::screen {

/// Codes for all symbols below `counts.size()`, the ones that come often shorter.
class PrefixCode {
  public:
    /// @param counts  how often each symbol comes; 269 in key frames, 270 in inter frames
    explicit PrefixCode(std::span<const std::uint32_t> counts);

    void WriteTo(BitWriter& out) const;
    Code Of(int symbol) const { return codes_[static_cast<std::size_t>(symbol)]; }

  private:
    struct Cut;
    std::vector<std::uint8_t> CutLengths(int longest_told) const;
    std::size_t BitsOfCut(int longest_told, std::span<const std::uint32_t> counts) const;
    void Assign();

    std::vector<std::uint8_t> full_;     // lengths of the best code
    std::vector<std::uint8_t> lengths_;  // of the code that is used
    std::vector<Code> codes_;
    int longest_told_ = 0;  // symbols with longer codes follow from those that are told
};

}  // namespace codecs::screen
