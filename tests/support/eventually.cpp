#include "support/eventually.h"

#include <chrono>
#include <thread>

namespace test_support {

bool Eventually(const std::function<bool()>& happened) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!happened()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

}  // namespace test_support
