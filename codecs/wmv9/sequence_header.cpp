#include "codecs/wmv9/sequence_header.h"

#include "codecs/common/bit_writer.h"

namespace codecs::wmv9 {

std::array<std::uint8_t, 4> SequenceHeader::Bytes() const {
    constexpr std::uint32_t kMainProfile = 4;
    constexpr std::uint32_t kUniform = 3;
    const auto number = [](int value) { return static_cast<std::uint32_t>(value); };
    BitWriter out;
    out.Put(profile == Profile::Main ? kMainProfile : 0, 4);  // PROFILE
    out.Put(number(rate_hint), 3);                            // FRMRTQ_POSTPROC
    out.Put(number(bits_hint), 5);                            // BITRTQ_POSTPROC
    out.Put(loop_filter, 1);                                  // LOOPFILTER
    out.Put(0, 1);                                            // reserved
    out.Put(0, 1);                                            // MULTIRES
    out.Put(1, 1);                                            // reserved
    out.Put(short_chroma_vectors, 1);                         // FASTUVMC
    out.Put(extended_vectors, 1);                             // EXTENDED_MV
    out.Put(varying_quantiser, 2);                            // DQUANT
    out.Put(1, 1);                                            // VSTRANSFORM
    out.Put(0, 1);                                            // reserved
    out.Put(overlap, 1);                                      // OVERLAP
    out.Put(0, 1);                                            // SYNCMARKER
    out.Put(0, 1);                                            // RANGERED
    out.Put(number(most_b_pictures), 3);                      // MAXBFRAMES
    out.Put(kUniform, 2);                                     // QUANTIZER
    out.Put(0, 1);                                            // FINTERPFLAG
    out.Put(1, 1);                                            // reserved: the released syntax
    return {out.Bytes()[0], out.Bytes()[1], out.Bytes()[2], out.Bytes()[3]};
}

}  // namespace codecs::wmv9
