// Errors as values, from the lines that the pane gets about them.
#include "app/run_log.h"

#include <gtest/gtest.h>

namespace app {
namespace {

TEST(RunLog, AnErrorsLineGivesItsNumberAndDescription) {
    struct Case {
        const char* why;
        const char* line;
        std::uint32_t number;
        const char* description;
    };
    const Case kCases[] = {
        {"set-up", "Error: 0x80070002 - no.avi: not there", 0x80070002, "no.avi: not there"},
        {"profile", "Invalid profile: 0x80070057 bad size", 0x80070057, "bad size"},
        {"signed number", "Prepare to encode failed with error -2147024809 no output", 0x80070057,
         "no output"},
        {"start", "Start encoder failed with error -2147024784 disk", 0x80070070, "disk"},
        {"no number", "Invalid parameter: -x", 0, "Invalid parameter: -x"},
        {"no such form", "Error: Invalid audio device number specified", 0,
         "Error: Invalid audio device number specified"},
    };
    for (const Case& each : kCases) {
        SCOPED_TRACE(each.why);
        const platform::ErrorReport error = ErrorOfLine(each.line);
        EXPECT_EQ(error.number, each.number);
        EXPECT_EQ(error.description, each.description);
    }
}

}  // namespace
}  // namespace app
