// Waiting for what another program does.
#pragma once

#include <functional>

namespace test_support {

/// Asks again and again until it is so, for half a minute at most.
bool Eventually(const std::function<bool()>& happened);

}  // namespace test_support
