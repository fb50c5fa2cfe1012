// What libavcodec says of a stream.
#pragma once

#include <string>

namespace test_support {

/// Warnings and worse of this thread since it called CollectLibraryMessages. The library has one
/// place for the messages of all its decoders.
std::string& LibraryMessages();

/// From now on.
/// @param ignored  messages with this text in them are none; empty = all count
void CollectLibraryMessages(const std::string& ignored = {});

}  // namespace test_support
