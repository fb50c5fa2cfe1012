// The text of the JSON objects, whatever bytes the names in them have.
#include "platform/host/json_report.h"

#include <fcntl.h>

#include <fstream>
#include <iterator>

#include "platform/posix/file_descriptor.h"
#include "support/commands.h"

namespace platform::host {
namespace {

TEST(JsonReport, AnyTextKeepsToItsLineAndIsValid) {
    const test_support::TempFolder folder;
    {
        const FileDescriptor out(::open((folder / "out").c_str(), O_CREAT | O_RDWR, 0600));
        ConsoleOutput output(out.Number(), out.Number());
        RunProgress progress;
        for (const char* const name : {"a\"b\\c", "line\r\nend\x01", "\xC3\xBC", "\xFF\xC3("}) {
            progress.input = name;
            JsonReport(output).WriteProgress(progress);
        }
    }
    std::ifstream file(folder / "out");
    const std::string expected[] = {R"("a\"b\\c")", R"("line\r\nend\u0001")", "\"\xC3\xBC\"",
                                    "\"\xEF\xBF\xBD\xEF\xBF\xBD(\""};
    for (const std::string& name : expected) {
        std::string line;
        ASSERT_TRUE(std::getline(file, line));
        EXPECT_NE(line.find("\"input\":" + name + ","), std::string::npos) << line;
    }
}

}  // namespace
}  // namespace platform::host
