// Files in memory for what reads by name: a folder that lives as long as the process.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace fuzz {

/// A folder in memory that only this process uses, gone when it ends in good order.
const std::string& MemoryFolder();

/// Writes the bytes to a file of the folder, which it replaces, and returns its path.
std::string MemoryFile(const std::string& name, std::span<const std::uint8_t> bytes);

}  // namespace fuzz
