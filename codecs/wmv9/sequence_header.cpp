#include "codecs/wmv9/sequence_header.h"

#include "codecs/common/bit_writer.h"

namespace codecs::wmv9 {

std::array<std::uint8_t, 4> SequenceHeader::Bytes() const {
    constexpr std::uint32_t kMainProfile = 4;
    constexpr std::uint32_t kUniform = 3;
    const auto number = [](int value) { return static_cast<std::uint32_t>(value); };
    BitWriter out;
    out.Put(profile == Profile::Main ? kMainProfile : 0, 4);
    out.Put(number(rate_hint), 3);
    out.Put(number(bits_hint), 5);
    out.Put(loop_filter, 1);
    out.Put(0, 2);  // reserved; no pictures of other sizes
    out.Put(1, 1);  // reserved
    out.Put(short_chroma_vectors, 1);
    out.Put(extended_vectors, 1);
    out.Put(varying_quantiser, 2);
    out.Put(1, 1);  // transform sizes vary
    out.Put(0, 1);  // reserved
    out.Put(overlap, 1);
    out.Put(0, 2);  // no markers, full range
    out.Put(number(most_b_pictures), 3);
    out.Put(kUniform, 2);
    out.Put(0, 1);  // no hint for interpolated pictures
    out.Put(1, 1);  // the released syntax
    return {out.Bytes()[0], out.Bytes()[1], out.Bytes()[2], out.Bytes()[3]};
}

}  // namespace codecs::wmv9
