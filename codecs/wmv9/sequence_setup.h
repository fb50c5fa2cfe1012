// What the settings of a stream come to.
#pragma once

#include "codecs/wmv9/encoder.h"
#include "codecs/wmv9/sequence_header.h"

namespace codecs::wmv9 {

/// Within what the format and the profile have.
EncoderSettings Checked(EncoderSettings settings);

/// MVRANGE, 0 to 3: vectors may be as long as pictures of that size need.
int VectorRange(const EncoderSettings& settings);

/// Of checked settings.
SequenceHeader MakeSequence(const EncoderSettings& settings);

}  // namespace codecs::wmv9
