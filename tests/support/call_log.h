// What the fakes share: the operations in the order in which they came, and the failures asked for.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/error.h"

namespace test_support {

class CallLog {
  public:
    /// Makes the operation fail `times` times (from its next call on), or always with -1.
    void Fail(const std::string& operation, std::uint32_t number, const std::string& description,
              int times = -1) {
        failures_[operation] = Failure{number, description, times};
    }
    /// Notes a call as "operation" followed by `rest`, or throws the failure asked for.
    void Call(const std::string& operation, const std::string& rest = "") {
        const auto failure = failures_.find(operation);
        if (failure != failures_.end() && failure->second.times != 0) {
            if (failure->second.times > 0) --failure->second.times;
            throw platform::Error(failure->second.number, failure->second.description);
        }
        lines.push_back(operation + rest);
    }
    bool Has(const std::string& line) const { return Count(line) > 0; }
    int Count(const std::string& line) const {
        int count = 0;
        for (const std::string& each : lines) count += each == line ? 1 : 0;
        return count;
    }
    /// The lines that begin with `prefix`, in order.
    std::vector<std::string> Of(const std::string& prefix) const {
        std::vector<std::string> found;
        for (const std::string& each : lines)
            if (each.compare(0, prefix.size(), prefix) == 0) found.push_back(each);
        return found;
    }

    std::vector<std::string> lines;

  private:
    struct Failure {
        std::uint32_t number = 0;
        std::string description;
        int times = -1;
    };
    std::map<std::string, Failure> failures_;
};

using CallLogPtr = std::shared_ptr<CallLog>;

}  // namespace test_support
