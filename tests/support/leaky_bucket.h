// What the receiver's buffer holds of a written file, by its packets alone.
#pragma once

#include <string>

namespace test_support {

/// What a buffer that drains at `rate_bps` has held of the file's pictures at most, in bits. That
/// it is no more than its size also bounds the bits of every stretch of time: to what drains in it
/// and once the size. The file has one video stream.
double FullestBucket(const std::string& file, double rate_bps);

}  // namespace test_support
