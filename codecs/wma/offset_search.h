// Searches for the offset that makes a frame as large as it shall be.
#pragma once

#include <functional>

namespace codecs::wma {

/// The offset in dB with which a frame takes `wanted` bits, about. kLeastOffsetDb = it never takes
/// as much.
/// @param start  where to look first
/// @param code   codes the frame with an offset, and says how many bits that takes
double FairOffset(double wanted, double start, const std::function<int(double offset_db)>& code);

}  // namespace codecs::wma
