// How often this program has asked the heap for memory.
#pragma once

#include <cstddef>

std::size_t Allocations();
