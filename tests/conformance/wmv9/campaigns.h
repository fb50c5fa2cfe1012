// Comparisons that follow from a number, as many as one has time for.
#pragma once

#include <cstdint>
#include <string>

namespace wmv9_conformance {

/// The first fault of a stream of random decisions; empty = none.
std::string FaultOfStream(std::uint64_t seed);
/// Of an encoder called at random.
std::string FaultOfCalls(std::uint64_t seed);

}  // namespace wmv9_conformance
