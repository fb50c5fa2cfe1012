// The error that a step ends with, to be looked at.
#pragma once

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "platform/error.h"

namespace test_support {

/// Number 0 and no text when the step ends without one.
template <typename Step>
platform::Error ErrorOf(const Step& step) {
    try {
        step();
    } catch (const platform::Error& error) {
        return error;
    }
    return {0, ""};
}

/// The error's number, 0 when there is none; its text must have all `words`.
template <typename Step>
std::uint32_t ErrorNumber(const Step& step, const std::vector<std::string>& words = {}) {
    const platform::Error error = ErrorOf(step);
    if (error.number() == 0) return 0;
    for (const std::string& word : words)
        EXPECT_THAT(error.description(), testing::HasSubstr(word));
    return error.unsigned_number();
}

}  // namespace test_support
