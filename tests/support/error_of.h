// The error that a step ends with, to be looked at.
#pragma once

#include "platform/error.h"

namespace test_support {

/// Number 0 when the step ends without one.
template <typename Step>
platform::Error ErrorOf(const Step& step) {
    try {
        step();
    } catch (const platform::Error& error) {
        return error;
    }
    return {0, ""};
}

}  // namespace test_support
