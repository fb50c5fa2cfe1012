// The addresses by which others on the network reach this machine.
#pragma once

#include <string>
#include <vector>

namespace platform {

/// Numbers, those of the older protocol first; the machine's own for itself where there is no
/// network. Any thread.
std::vector<std::string> HostAddresses();

}  // namespace platform
