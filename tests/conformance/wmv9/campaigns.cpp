#include "conformance/wmv9/campaigns.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <iterator>
#include <string_view>

using namespace wmv9_conformance;

namespace {

struct Campaign {
    std::string_view option;
    std::string (*fault_of)(std::uint64_t seed);
};

constexpr Campaign kCampaigns[] = {
    {"--streams", FaultOfStream},
    {"--calls", FaultOfCalls},
};

int Run(const Campaign& campaign, std::uint64_t first, std::uint64_t count) {
    std::uint64_t faults = 0;
    for (std::uint64_t seed = first; seed < first + count; ++seed) {
        const std::string fault = campaign.fault_of(seed);
        if (fault.empty()) continue;
        fmt::print("{}\n", fault);
        ++faults;
    }
    fmt::print("{} compared, {} with faults\n", count, faults);
    return faults == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const auto number = [&](int i) { return std::strtoull(argv[i], nullptr, 10); };
    for (const Campaign& campaign : kCampaigns)
        if (argc == 4 && argv[1] == campaign.option) return Run(campaign, number(2), number(3));
    return RUN_ALL_TESTS();
}
